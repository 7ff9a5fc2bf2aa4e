#include "simulator/chips/isp51_data_chip.h"

namespace fliglaf::simulator {
namespace {

constexpr std::int64_t kStartUp = 10 * Clock::kMillisecond;

constexpr std::size_t kInstructionBytes = 3;

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

Isp51DataChip::Isp51DataChip(const Clock& clock, const Silicon& silicon)
    : InstructionChip(clock, kSerialWiring, {.after_reset = 0, .after_power = kStartUp},
                      kInstructionBytes),
      silicon_(silicon),
      flash_(silicon.flash_bytes),
      eeprom_(silicon.eeprom_bytes) {}

std::vector<MemoryArea> Isp51DataChip::Memory() {
  return {{"flash", flash_.cells(), FlashArray::kErased},
          {"eeprom", eeprom_.cells(), FlashArray::kErased},
          {"lock", {&lock_bits_, 1}, 0, kAllLockBits}};
}

std::optional<std::uint8_t> Isp51DataChip::Answer() const {
  if (!enabled() || busy() || (lock_bits_ & kNoReading) != 0) return kHiddenByte;
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
  if (TakeEnable() || !enabled() || busy()) return;
  if (byte_at(0) == kControl) return Control();
  if ((lock_bits_ & kNoWriting) != 0) return;
  if (operation() == kWriteFlash) {
    flash_.Rewrite(address(), byte_at(2));
    BusyFor(silicon_.byte_write);
  } else if (operation() == kWriteEeprom) {
    eeprom_.Rewrite(address() & 0x7FF, byte_at(2));
    BusyFor(silicon_.eeprom_write);
  }
}

void Isp51DataChip::Control() {
  if ((byte_at(1) & 0x07) == kChipErase) {
    flash_.Erase();
    eeprom_.Erase();
    lock_bits_ = 0;
    BusyFor(silicon_.erase);
  } else if ((byte_at(1) & 0x07) == kWriteLock) {
    lock_bits_ |= LockBits(byte_at(1));
    BusyFor(silicon_.byte_write);
  }
}

}  // namespace fliglaf::simulator
