#pragma once

#include <cstdint>
#include <vector>

#include "simulator/chips/instruction_chip.h"
#include "simulator/flash_array.h"
#include "simulator/silicon.h"

namespace fliglaf::simulator {

/// A flash microcontroller of the 8051 kind with a data EEPROM: three-byte instructions, both
/// memories byte by byte. Works as the data sheets of such parts publish it:
/// - The interface listens while reset is high, from 10 ms after the supply has come.
/// - Only the programming enable is understood before it; nothing answers it.
/// - A write erases its byte first. Instructions that come while a write or an erase is in progress
///   are taken in and not carried out; what is read then is 0x00.
/// - Lock bit 1 forbids writing both memories, lock bit 2 reading them as well (0x00 is read), lock
///   bit 3 external execution. A lock bit can be set only; a chip erase lifts all of them and
///   erases both memories.
class Isp51DataChip : public InstructionChip {
 public:
  /// 1 to 8192 bytes of flash, 1 to 2048 of EEPROM. The lock bits take the time of a byte.
  Isp51DataChip(const Clock& clock, const Silicon& silicon);

  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

 private:
  [[nodiscard]] std::optional<std::uint8_t> Answer() const override;
  void Execute() override;
  void Control();

  [[nodiscard]] std::uint8_t operation() const { return byte_at(0) & 0x07; }
  [[nodiscard]] std::uint32_t address() const {
    return static_cast<std::uint32_t>(byte_at(0) >> 3 << 8 | byte_at(1));
  }

  Silicon silicon_;
  FlashArray flash_;
  FlashArray eeprom_;
  std::uint8_t lock_bits_ = 0;  ///< bit 0: lock bit 1
};

}  // namespace fliglaf::simulator
