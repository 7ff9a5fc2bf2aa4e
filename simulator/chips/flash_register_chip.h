#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "simulator/chips/jtag_chip.h"
#include "simulator/flash_array.h"
#include "simulator/silicon.h"

namespace fliglaf::simulator {

/// A flash microcontroller that is programmed through four indirect flash registers behind its test
/// access port, as the data sheets of such parts publish it:
/// - The upper four bits of an instruction steer the core: 2 resets it, 1 halts it. The registers
///   answer only from a core that has been halted after a reset; the reset clears them.
/// - A register is accessed by a scan of any length whose last two bits are the operation: 11
///   writes what stands right ahead of it, 10 latches the register for the next scan to carry out.
/// - That next scan has bit 0 while the access goes on, then the flash's own busy and failure bits,
///   and the byte in bits 3 to 10.
/// - The control register sets what an access to the data register does: nothing, a read ahead of
///   the next byte, a read of one byte, the programming of a byte, the erasing of a page, which has
///   to be written 0xA5. The address moves on after a read and after a programmed byte.
/// - The timing register has to fit the clock, or nothing is programmed or erased. While the flash
///   is busy accesses are lost.
/// - A 0 in the first lock byte keeps an eighth of the flash from being written or erased, one in
///   the second from being read, from the next start on. Erasing the page with the lock bytes
///   erases the whole flash and lifts them.
class FlashRegisterChip : public JtagChip {
 public:
  struct Features {
    bool second_apart;  ///< the second area has addresses of its own, else it follows the flash
    bool wide;          ///< register set B with 17 address bits, else set A with 16
  };

  /// The flash goes from address 0 up to the two lock bytes; one page more follows them. The
  /// signature is manufacturer, part, version.
  FlashRegisterChip(const Clock& clock, const JtagWiring& wiring, const Silicon& silicon,
                    const Features& features);

  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

 private:
  /// The flash registers in the order of their instructions.
  enum class Register : std::uint8_t { kControl, kData, kAddress, kScale };

  /// A place in one of the two memories.
  struct Place {
    FlashArray* memory = nullptr;  ///< null: no memory at this address
    std::uint32_t address = 0;
  };

  void Restart() override;
  void InstructionChanged() override;
  [[nodiscard]] DataRegister CaptureDr() override;
  void UpdateDr(std::uint64_t bits) override;

  [[nodiscard]] std::optional<Register> Selected() const;
  [[nodiscard]] int WidthOf(Register selected) const;
  void ClearRegisters();
  void Write(Register selected, std::uint32_t value);
  void Latch(Register selected);
  void AccessDataToWrite();
  void AccessDataToRead();
  [[nodiscard]] std::uint8_t ReadCell();
  void ProgramCell();
  void ErasePage();
  [[nodiscard]] Place At(std::uint32_t address);
  [[nodiscard]] bool Locked(const Place& place, std::uint8_t lock) const;
  [[nodiscard]] std::size_t flash_bytes() const {
    return silicon_.flash_bytes + 2 + silicon_.page_bytes;
  }

  Silicon silicon_;
  Features features_;
  FlashArray flash_;
  std::optional<FlashArray> second_;
  /// The lock bytes as they were at the last start.
  std::array<std::uint8_t, 2> locks_{};

  bool reset_ = false;
  bool halted_ = false;
  std::uint8_t control_ = 0;
  std::uint8_t data_ = 0;
  std::uint32_t address_ = 0;
  std::uint8_t scale_ = 0;
  bool unread_ = false;  ///< data_ has been read from the flash and not been taken
  bool failed_ = false;
  std::uint32_t latched_ = 0;
};

}  // namespace fliglaf::simulator
