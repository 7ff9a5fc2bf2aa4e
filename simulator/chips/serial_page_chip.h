#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "simulator/chips/instruction_chip.h"
#include "simulator/flash_array.h"
#include "simulator/silicon.h"

namespace fliglaf::simulator {

/// A flash microcontroller with words of two bytes, a page buffer and EEPROM, and serial
/// programming in four-byte instructions. Works as the data sheets of such parts publish it:
/// - The interface listens while reset is low and is in step when reset fell with the clock low;
///   that edge also leaves programming mode.
/// - What comes in goes out again a byte later, unless the instruction has an answer. So the second
///   byte of the programming enable comes back while the third is sent, and an instruction that is
///   not carried out answers with its third byte.
/// - Only the programming enable is carried out before it, and nothing while a write or an erase is
///   in progress.
/// - Lock bit 0 forbids writing flash, EEPROM and fuses, lock bit 1 reading flash and EEPROM as
///   well. They can only be written to 0; a chip erase lifts them and erases the EEPROM too.
/// - A new part has its serial interface on, runs from the internal oscillator divided by eight, and
///   has no other fuse programmed, but for SUT bits. Without the SPIEN fuse, or with RSTDISBL, the
///   interface is dead from the next reset on. A part with one fuse byte has SPIEN there.
class SerialPageChip : public InstructionChip {
 public:
  /// Factory values of the oscillator at its four frequencies.
  static constexpr std::array<std::uint8_t, 4> kCalibration{0xB3, 0xB1, 0xAC, 0xA7};

  struct Features {
    std::size_t fuse_bytes;  ///< 1 to 3: low, high, extended
  };

  /// A page of 2^n bytes.
  SerialPageChip(const Clock& clock, const Silicon& silicon, const Features& features);

  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

 private:
  void Restart() override;
  void TakeByte(std::uint8_t byte) override;
  [[nodiscard]] std::optional<std::uint8_t> Answer() const override;
  [[nodiscard]] std::optional<std::uint8_t> Fuse(std::size_t number) const;
  void Execute() override;
  void Control();
  void LoadPage(bool high);
  void WritePage();
  void WriteEeprom();
  void WriteFuse(std::size_t number);
  void WriteLock();
  void EraseChip();

  [[nodiscard]] std::uint32_t address() const {
    return static_cast<std::uint32_t>(byte_at(1) << 8 | byte_at(2));
  }
  [[nodiscard]] bool may_write() const { return (lock_ & 0x03) == 0x03; }
  [[nodiscard]] bool may_read() const { return (lock_ & 0x02) != 0; }

  [[nodiscard]] bool fuses_allow_serial() const;

  Silicon silicon_;
  FlashArray flash_;
  std::optional<FlashArray> eeprom_;
  std::vector<std::uint8_t> fuses_;
  std::uint8_t lock_ = FlashArray::kErased;

  bool answers_ = true;  ///< as the fuses were at the last reset
  std::vector<std::uint8_t> page_;
};

}  // namespace fliglaf::simulator
