#include "simulator/chips/serial_word_chip.h"

namespace fliglaf::simulator {
namespace {

/// From the fall of reset to the first instruction.
constexpr std::int64_t kAfterReset = 20 * Clock::kMillisecond;

/// First bytes of instructions; of the flash ones, bit 3 selects the high byte.
constexpr std::uint8_t kReadFlash = 0x20;
constexpr std::uint8_t kReadSignature = 0x30;
constexpr std::uint8_t kWriteFlash = 0x40;
constexpr std::uint8_t kReadEeprom = 0xA0;
constexpr std::uint8_t kControl = 0xAC;
constexpr std::uint8_t kWriteEeprom = 0xC0;
constexpr std::uint8_t kHighByte = 0x08;

/// Second bytes of control instructions, by their published patterns.
constexpr std::uint8_t kProgrammingEnable = 0x53;
constexpr bool IsChipErase(std::uint8_t byte) { return (byte & 0xE0) == 0x80; }
constexpr bool IsLockWrite(std::uint8_t byte) { return (byte & 0xE0) == 0xE0; }

/// Lock bits 1 and 2 where the lock instruction has them, 1 = not locked.
constexpr std::uint8_t kLock1 = 0x02;
constexpr std::uint8_t kLock2 = 0x04;
constexpr std::uint8_t kUnlocked = kLock1 | kLock2;
constexpr std::uint8_t kHiddenByte = 0x00;

}  // namespace

SerialWordChip::SerialWordChip(const Clock& clock, const SerialWordModel& model)
    : SerialChip(clock, kSerialWiringLow, {.after_reset = kAfterReset}),
      model_(model),
      flash_(model.flash_bytes),
      eeprom_(model.eeprom_bytes),
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
  enabled_ = false;
  instruction_bytes_ = 0;
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
  instruction_[instruction_bytes_++] = byte;
  if (instruction_bytes_ == 3) Load(ReadByte());
  if (instruction_bytes_ < instruction_.size()) return;
  instruction_bytes_ = 0;
  Execute();
}

std::uint8_t SerialWordChip::ReadByte() const {
  if (!enabled_ || busy() || lock_ == 0) return kHiddenByte;
  switch (instruction_[0]) {
    case kReadFlash:
    case kReadFlash | kHighByte:
      return flash_.Read(flash_address());
    case kReadEeprom:
      return eeprom_.Read(eeprom_address());
    case kReadSignature:
      return model_.signature[(instruction_[2] & 0x03) % model_.signature.size()];
    default:
      return kHiddenByte;
  }
}

void SerialWordChip::Execute() {
  if (instruction_[0] == kControl) return Control();
  if (!enabled_ || busy() || lock_ != kUnlocked) return;
  if ((instruction_[0] & ~kHighByte) == kWriteFlash) {
    flash_.Program(flash_address(), instruction_[3]);
    BusyFor(model_.flash_write);
  } else if (instruction_[0] == kWriteEeprom) {
    eeprom_.Rewrite(eeprom_address(), instruction_[3]);
    BusyFor(model_.eeprom_write);
  }
}

void SerialWordChip::Control() {
  if (instruction_[1] == kProgrammingEnable) {
    enabled_ = true;
  } else if (!enabled_ || busy()) {
    return;
  } else if (IsChipErase(instruction_[1])) {
    erasing_ = true;
    BusyFor(model_.chip_erase);
  } else if (IsLockWrite(instruction_[1])) {
    lock_ &= instruction_[1];
    BusyFor(model_.lock_write);
  }
}

}  // namespace fliglaf::simulator
