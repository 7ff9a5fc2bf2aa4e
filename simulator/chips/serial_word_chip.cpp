#include "simulator/chips/serial_word_chip.h"

namespace fliglaf::simulator {
namespace {

/// From the fall of reset to the first instruction.
constexpr std::int64_t kAfterReset = 20 * Clock::kMillisecond;

constexpr std::size_t kInstructionBytes = 4;

/// First bytes of instructions; of the flash ones, bit 3 selects the high byte.
constexpr std::uint8_t kReadFlash = 0x20;
constexpr std::uint8_t kReadSignature = 0x30;
constexpr std::uint8_t kWriteFlash = 0x40;
constexpr std::uint8_t kReadEeprom = 0xA0;
constexpr std::uint8_t kWriteEeprom = 0xC0;
constexpr std::uint8_t kHighByte = 0x08;

/// Second bytes of control instructions, by their published patterns.
constexpr bool IsChipErase(std::uint8_t byte) { return (byte & 0xE0) == 0x80; }
constexpr bool IsLockWrite(std::uint8_t byte) { return (byte & 0xE0) == 0xE0; }

/// Lock bits 1 and 2 where the lock instruction has them, 1 = not locked.
constexpr std::uint8_t kLock1 = 0x02;
constexpr std::uint8_t kLock2 = 0x04;
constexpr std::uint8_t kUnlocked = kLock1 | kLock2;
constexpr std::uint8_t kHiddenByte = 0x00;

}  // namespace

SerialWordChip::SerialWordChip(const Clock& clock, const Silicon& silicon)
    : InstructionChip(clock, kSerialWiringLow, {.after_reset = kAfterReset}, kInstructionBytes),
      silicon_(silicon),
      flash_(silicon.flash_bytes),
      eeprom_(silicon.eeprom_bytes),
      lock_(kUnlocked) {}

std::vector<MemoryArea> SerialWordChip::Memory() {
  CompleteErase();
  return {{"flash", flash_.cells(), FlashArray::kErased},
          {"eeprom", eeprom_.cells(), FlashArray::kErased},
          {"lock", {&lock_, 1}, kUnlocked, kUnlocked}};
}

void SerialWordChip::Restart() {
  CompleteErase();
  erasing_ = false;
  InstructionChip::Restart();
}

void SerialWordChip::CompleteErase() {
  if (!erasing_ || busy()) return;
  erasing_ = false;
  flash_.Erase();
  eeprom_.Erase();
  lock_ = kUnlocked;
}

void SerialWordChip::TakeByte(std::uint8_t byte) {
  CompleteErase();
  InstructionChip::TakeByte(byte);
}

std::optional<std::uint8_t> SerialWordChip::Answer() const {
  if (!enabled() || busy() || lock_ == 0) return kHiddenByte;
  switch (byte_at(0)) {
    case kReadFlash:
    case kReadFlash | kHighByte:
      return flash_.Read(flash_address());
    case kReadEeprom:
      return eeprom_.Read(eeprom_address());
    case kReadSignature:
      return silicon_.signature[(byte_at(2) & 0x03) % silicon_.signature.size()];
    default:
      return kHiddenByte;
  }
}

void SerialWordChip::Execute() {
  if (TakeEnable() || !enabled() || busy()) return;
  if (byte_at(0) == kControl) return Control();
  if (lock_ != kUnlocked) return;
  if ((byte_at(0) & ~kHighByte) == kWriteFlash) {
    flash_.Program(flash_address(), byte_at(3));
    BusyFor(silicon_.byte_write);
  } else if (byte_at(0) == kWriteEeprom) {
    eeprom_.Rewrite(eeprom_address(), byte_at(3));
    BusyFor(silicon_.eeprom_write);
  }
}

void SerialWordChip::Control() {
  if (IsChipErase(byte_at(1))) {
    erasing_ = true;
    BusyFor(silicon_.erase);
  } else if (IsLockWrite(byte_at(1))) {
    lock_ &= byte_at(1);
    BusyFor(silicon_.lock_write);
  }
}

}  // namespace fliglaf::simulator
