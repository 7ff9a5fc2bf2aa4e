#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "simulator/chips/serial_chip.h"
#include "simulator/flash_array.h"

namespace fliglaf::simulator {

/// Sizes above 0, times in ns.
struct Isp51DataModel {
  std::size_t flash_bytes;   ///< up to 8192
  std::size_t eeprom_bytes;  ///< up to 2048
  std::int64_t flash_write;  ///< of a byte, or of the lock bits
  std::int64_t eeprom_write;
  std::int64_t chip_erase;
};

/// A flash microcontroller of the 8051 kind with a data EEPROM: three-byte instructions, both
/// memories byte by byte. Works as the data sheets of such parts publish it:
/// - The interface listens while reset is high, from 10 ms after the supply has come.
/// - Only the programming enable is understood before it; nothing answers it.
/// - A write erases its byte first. Instructions that come while a write or an erase is in progress
///   are taken in and not carried out; what is read then is 0x00.
/// - Lock bit 1 forbids writing both memories, lock bit 2 reading them as well (0x00 is read), lock
///   bit 3 external execution. A lock bit can be set only; a chip erase lifts all of them and
///   erases both memories.
class Isp51DataChip : public SerialChip {
 public:
  Isp51DataChip(const Clock& clock, const Isp51DataModel& model);

  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

 private:
  void Restart() override;
  void TakeByte(std::uint8_t byte) override;
  [[nodiscard]] std::uint8_t ReadByte() const;
  void Execute();
  void Control();

  [[nodiscard]] std::uint8_t operation() const { return instruction_[0] & 0x07; }
  [[nodiscard]] std::uint32_t address() const {
    return static_cast<std::uint32_t>(instruction_[0] >> 3 << 8 | instruction_[1]);
  }

  Isp51DataModel model_;
  FlashArray flash_;
  FlashArray eeprom_;
  std::uint8_t lock_bits_ = 0;  ///< bit 0: lock bit 1

  bool enabled_ = false;
  std::array<std::uint8_t, 3> instruction_{};
  std::size_t instruction_bytes_ = 0;
};

}  // namespace fliglaf::simulator
