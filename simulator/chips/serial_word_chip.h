#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "simulator/chips/serial_chip.h"
#include "simulator/flash_array.h"

namespace fliglaf::simulator {

/// Sizes above 0, times in ns.
struct SerialWordModel {
  std::size_t flash_bytes;   ///< up to 1024
  std::size_t eeprom_bytes;  ///< up to 64
  std::array<std::uint8_t, 3> signature;
  std::int64_t flash_write;  ///< of a byte
  std::int64_t eeprom_write;
  std::int64_t lock_write;
  std::int64_t chip_erase;
};

/// A flash microcontroller with words of two bytes and EEPROM, and serial programming byte by byte
/// in four-byte instructions. Works as the data sheets of such parts publish it:
/// - The interface listens while reset is low, from 20 ms after it fell with the clock low; a reset
///   pulse leaves programming mode and breaks an erase off, which then has erased nothing.
/// - Only the programming enable is understood before it; nothing answers it.
/// - Writing takes flash bits from 1 to 0; an EEPROM byte is erased first. Instructions that come
///   while a write or an erase is in progress are taken in and not carried out; what is read then
///   is 0x00.
/// - Lock bit 1 forbids writing both memories; with lock bit 2 as well they and the signature read
///   0x00. They can be written to 0 only; a chip erase lifts them and erases both memories.
class SerialWordChip : public SerialChip {
 public:
  SerialWordChip(const Clock& clock, const SerialWordModel& model);

  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

 private:
  void Restart() override;
  void TakeByte(std::uint8_t byte) override;
  [[nodiscard]] std::uint8_t ReadByte() const;
  void Execute();
  void Control();
  void CompleteErase();

  /// Address of a flash byte: the word from the second and third byte, its half from the first.
  [[nodiscard]] std::uint32_t flash_address() const {
    const int word = (instruction_[1] & 0x01) << 8 | instruction_[2];
    return static_cast<std::uint32_t>((word << 1) | (instruction_[0] >> 3 & 0x01));
  }
  [[nodiscard]] std::uint32_t eeprom_address() const { return instruction_[2] & 0x3F; }

  SerialWordModel model_;
  FlashArray flash_;
  FlashArray eeprom_;
  std::uint8_t lock_;

  bool enabled_ = false;
  bool erasing_ = false;
  std::array<std::uint8_t, 4> instruction_{};
  std::size_t instruction_bytes_ = 0;
};

}  // namespace fliglaf::simulator
