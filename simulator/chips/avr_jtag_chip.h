#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "simulator/chips/jtag_chip.h"
#include "simulator/flash_array.h"
#include "simulator/silicon.h"

namespace fliglaf::simulator {

/// A flash microcontroller with the AVR JTAG programming interface, as the data sheets of such
/// parts publish it:
/// - The instructions AVR_RESET, PROG_ENABLE, PROG_COMMANDS, PROG_PAGELOAD and PROG_PAGEREAD;
///   IDCODE after a reset of the port, BYPASS for all others. Programming mode needs the reset
///   register at 1 and the signature 0xA370, and ends with either.
/// - A programming command is a set of control signals and a byte. The result of one comes out
///   while the next one is shifted in: the byte that was read, and in bit 9 whether the chip is
///   ready.
/// - While a write or an erase is in progress commands and page data are lost, and reads give 0xFF.
/// - A flash page is written from a buffer that is erased afterwards; writing clears bits only. An
///   EEPROM page takes what was latched for it, and erases these cells itself.
/// - Lock bit 0 forbids programming, lock bit 1 reading flash and EEPROM as well; only a chip erase
///   lifts them. It erases the EEPROM too, unless the EESAVE fuse keeps that.
/// - Without the JTAGEN fuse the port is shut from the next start on.
class AvrJtagChip : public JtagChip {
 public:
  static constexpr std::uint8_t kCalibration = 0xB1;

  struct Features {
    bool long_page_register;  ///< else a page passes byte by byte, an Update-DR after each
    bool extended_fuses;
  };

  /// A page of 2^n bytes; an EEPROM page is a 32nd of it.
  AvrJtagChip(const Clock& clock, const JtagWiring& wiring, const Silicon& silicon,
              const Features& features);

  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

 private:
  void Restart() override;
  void InstructionChanged() override;
  void TestLogicReset() override;
  [[nodiscard]] DataRegister CaptureDr() override;
  void UpdateDr(std::uint64_t bits) override;
  [[nodiscard]] std::uint8_t TakeByte(std::uint8_t byte) override;

  void Execute(std::uint16_t command);
  void LoadAddress(std::uint16_t command, std::uint8_t byte);
  void LatchData();
  void Write(std::uint16_t command);
  void WriteFlashPage();
  void WriteEepromPage();
  void WriteFuse(std::uint16_t command);
  void EraseChip();
  [[nodiscard]] std::uint8_t ReadOut() const;
  [[nodiscard]] std::uint8_t ReadConfig() const;
  void LoadPageByte(std::uint8_t byte);
  [[nodiscard]] std::uint8_t NextPageByte();
  [[nodiscard]] std::uint8_t ReadFlash(std::uint32_t byte) const;

  [[nodiscard]] bool programming() const { return in_reset_ && enabled_; }
  [[nodiscard]] bool may_write() const { return (lock_ & 0x03) == 0x03; }
  [[nodiscard]] bool may_read() const { return (lock_ & 0x02) != 0; }

  Silicon silicon_;
  Features features_;
  FlashArray flash_;
  std::optional<FlashArray> eeprom_;
  std::uint8_t fuse_low_;
  std::uint8_t fuse_high_;
  std::uint8_t fuse_extended_;
  std::uint8_t lock_ = FlashArray::kErased;

  bool in_reset_ = false;
  bool enabled_ = false;
  /// The command in progress: control signals above, byte below.
  std::uint16_t command_ = 0;
  /// The operation that was loaded: flash write, fuse read ...
  std::uint8_t mode_ = 0;
  std::uint32_t address_ = 0;  ///< words; bytes in the EEPROM
  std::array<std::uint8_t, 2> data_{};
  std::vector<std::uint8_t> page_;
  std::vector<std::optional<std::uint8_t>> eeprom_page_;
  /// Bytes that have passed since PROG_PAGELOAD or PROG_PAGEREAD was selected.
  std::uint32_t page_bytes_passed_ = 0;
};

}  // namespace fliglaf::simulator
