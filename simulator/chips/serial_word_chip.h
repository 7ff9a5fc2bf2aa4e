#pragma once

#include <cstdint>
#include <vector>

#include "simulator/chips/instruction_chip.h"
#include "simulator/flash_array.h"
#include "simulator/silicon.h"

namespace fliglaf::simulator {

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
class SerialWordChip : public InstructionChip {
 public:
  /// 1 to 1024 bytes of flash, 1 to 64 of EEPROM.
  SerialWordChip(const Clock& clock, const Silicon& silicon);

  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

 private:
  void Restart() override;
  void TakeByte(std::uint8_t byte) override;
  [[nodiscard]] std::optional<std::uint8_t> Answer() const override;
  void Execute() override;
  void Control();
  void CompleteErase();

  /// Address of a flash byte: the word from the second and third byte, its half from the first.
  [[nodiscard]] std::uint32_t flash_address() const {
    const int word = (byte_at(1) & 0x01) << 8 | byte_at(2);
    return static_cast<std::uint32_t>((word << 1) | (byte_at(0) >> 3 & 0x01));
  }
  [[nodiscard]] std::uint32_t eeprom_address() const { return byte_at(2) & 0x3F; }

  Silicon silicon_;
  FlashArray flash_;
  FlashArray eeprom_;
  std::uint8_t lock_;

  bool erasing_ = false;
};

}  // namespace fliglaf::simulator
