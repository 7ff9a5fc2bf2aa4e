#include "simulator/chips/isp51_data_chip.h"

namespace fliglaf::simulator {
namespace {

constexpr std::int64_t kStartUp = 10 * Clock::kMillisecond;

constexpr std::uint8_t kControl = 0xAC;
constexpr std::uint8_t kProgrammingEnable = 0x53;

/// Bits 0 to 2 of the first byte. Bits 3 to 7 are address bits 8 to 12, of which the EEPROM has the
/// lower three.
constexpr std::uint8_t kReadFlash = 0x01;
constexpr std::uint8_t kWriteFlash = 0x02;
constexpr std::uint8_t kReadEeprom = 0x05;
constexpr std::uint8_t kWriteEeprom = 0x06;

/// Bits 0 to 2 of the second byte of a control instruction.
constexpr std::uint8_t kChipErase = 0x04;
constexpr std::uint8_t kWriteLock = 0x07;

constexpr std::uint8_t kNoWriting = 0x01;
constexpr std::uint8_t kNoReading = 0x02;
constexpr std::uint8_t kAllLockBits = 0x07;
constexpr std::uint8_t kHiddenByte = 0x00;

/// The lock bits that a control instruction sets: bits 7, 6 and 5, each set by a 0.
constexpr std::uint8_t LockBits(std::uint8_t byte) {
  return static_cast<std::uint8_t>(((byte & 0x80) == 0 ? 0x01 : 0) |
                                   ((byte & 0x40) == 0 ? 0x02 : 0) |
                                   ((byte & 0x20) == 0 ? 0x04 : 0));
}

}  // namespace

Isp51DataChip::Isp51DataChip(const Clock& clock, const Isp51DataModel& model)
    : SerialChip(clock, kSerialWiring, {.after_reset = 0, .after_power = kStartUp}),
      model_(model),
      flash_(model.flash_bytes),
      eeprom_(model.eeprom_bytes) {}

std::vector<MemoryArea> Isp51DataChip::Memory() {
  return {{"flash", flash_.cells(), FlashArray::kErased},
          {"eeprom", eeprom_.cells(), FlashArray::kErased},
          {"lock", {&lock_bits_, 1}, 0, kAllLockBits}};
}

void Isp51DataChip::Restart() {
  enabled_ = false;
  instruction_bytes_ = 0;
}

void Isp51DataChip::TakeByte(std::uint8_t byte) {
  instruction_[instruction_bytes_++] = byte;
  if (instruction_bytes_ == 2) Load(ReadByte());
  if (instruction_bytes_ < instruction_.size()) return;
  instruction_bytes_ = 0;
  Execute();
}

std::uint8_t Isp51DataChip::ReadByte() const {
  if (!enabled_ || busy() || (lock_bits_ & kNoReading) != 0) return kHiddenByte;
  switch (operation()) {
    case kReadFlash:
      return flash_.Read(address());
    case kReadEeprom:
      return eeprom_.Read(address() & 0x7FF);
    default:
      return kHiddenByte;
  }
}

void Isp51DataChip::Execute() {
  if (instruction_[0] == kControl) return Control();
  if (!enabled_ || busy() || (lock_bits_ & kNoWriting) != 0) return;
  if (operation() == kWriteFlash) {
    flash_.Rewrite(address(), instruction_[2]);
    BusyFor(model_.flash_write);
  } else if (operation() == kWriteEeprom) {
    eeprom_.Rewrite(address() & 0x7FF, instruction_[2]);
    BusyFor(model_.eeprom_write);
  }
}

void Isp51DataChip::Control() {
  if (instruction_[1] == kProgrammingEnable) {
    enabled_ = true;
    return;
  }
  if (!enabled_ || busy()) return;
  if ((instruction_[1] & 0x07) == kChipErase) {
    flash_.Erase();
    eeprom_.Erase();
    lock_bits_ = 0;
    BusyFor(model_.chip_erase);
  } else if ((instruction_[1] & 0x07) == kWriteLock) {
    lock_bits_ |= LockBits(instruction_[1]);
    BusyFor(model_.flash_write);
  }
}

}  // namespace fliglaf::simulator
