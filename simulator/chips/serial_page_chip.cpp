#include "simulator/chips/serial_page_chip.h"

namespace fliglaf::simulator {
namespace {

/// From the fall of reset to the first instruction.
constexpr std::int64_t kAfterReset = 20 * Clock::kMillisecond;

constexpr std::size_t kInstructionBytes = 4;

/// First bytes of instructions.
constexpr std::uint8_t kReadFlashLow = 0x20;
constexpr std::uint8_t kReadFlashHigh = 0x28;
constexpr std::uint8_t kReadSignature = 0x30;
constexpr std::uint8_t kReadCalibration = 0x38;
constexpr std::uint8_t kLoadPageLow = 0x40;
constexpr std::uint8_t kLoadPageHigh = 0x48;
constexpr std::uint8_t kWritePage = 0x4C;
constexpr std::uint8_t kReadConfig1 = 0x50;  // second byte 0x00: low fuses, 0x08: extended fuses
constexpr std::uint8_t kReadConfig2 = 0x58;  // second byte 0x00: lock, 0x08: high fuses
constexpr std::uint8_t kReadEeprom = 0xA0;
constexpr std::uint8_t kWriteEeprom = 0xC0;

/// Second bytes of control instructions.
constexpr std::uint8_t kChipErase = 0x80;
constexpr std::uint8_t kWriteFuseLow = 0xA0;
constexpr std::uint8_t kWriteFuseExtended = 0xA4;
constexpr std::uint8_t kWriteFuseHigh = 0xA8;
constexpr std::uint8_t kWriteLock = 0xE0;

/// Implemented lock bits; the others read as 1.
constexpr std::uint8_t kLockBits = 0x3F;

/// Bits of the high fuse byte, or of the only one; 0 is programmed.
constexpr std::uint8_t kSpien = 0x20;
constexpr std::uint8_t kResetDisable = 0x80;

/// Fuses as a new chip has them, by the data sheets of such parts.
constexpr std::array<std::uint8_t, 3> kFactoryFuses{0x62, 0xDF, 0xFF};
constexpr std::uint8_t kFactoryOnlyFuses = 0xDF;

std::vector<std::uint8_t> FactoryFuses(std::size_t count) {
  if (count == 1) return {kFactoryOnlyFuses};
  return {kFactoryFuses.begin(), kFactoryFuses.begin() + static_cast<std::ptrdiff_t>(count)};
}

}  // namespace

SerialPageChip::SerialPageChip(const Clock& clock, const Silicon& silicon, const Features& features)
    : InstructionChip(clock, kSerialWiringLow,
                      {.after_reset = kAfterReset, .after_power = silicon.start_up.count()},
                      kInstructionBytes),
      silicon_(silicon),
      flash_(silicon.flash_bytes),
      fuses_(FactoryFuses(features.fuse_bytes)),
      page_(silicon.page_bytes, FlashArray::kErased) {
  if (silicon.eeprom_bytes > 0) eeprom_.emplace(silicon.eeprom_bytes);
}

std::vector<MemoryArea> SerialPageChip::Memory() {
  std::vector<MemoryArea> areas{{"flash", flash_.cells(), FlashArray::kErased}};
  if (eeprom_) areas.push_back({"eeprom", eeprom_->cells(), FlashArray::kErased});
  areas.push_back({.name = "fuses", .bytes = fuses_, .factory = FactoryFuses(fuses_.size())});
  areas.push_back({"lock", {&lock_, 1}, FlashArray::kErased});
  return areas;
}

void SerialPageChip::Restart() {
  InstructionChip::Restart();
  answers_ = fuses_allow_serial();
}

bool SerialPageChip::fuses_allow_serial() const {
  if (fuses_.size() == 1) return (fuses_[0] & kSpien) == 0;
  return (fuses_[1] & (kSpien | kResetDisable)) == kResetDisable;
}

void SerialPageChip::TakeByte(std::uint8_t byte) {
  if (!answers_) return;
  Load(byte);
  InstructionChip::TakeByte(byte);
}

std::optional<std::uint8_t> SerialPageChip::Answer() const {
  if (!enabled() || busy()) return std::nullopt;
  const bool second = byte_at(1) == 0x08;
  switch (byte_at(0)) {
    case kReadFlashLow:
    case kReadFlashHigh:
      if (!may_read()) return std::nullopt;
      return flash_.Read(2 * address() + (byte_at(0) == kReadFlashHigh ? 1 : 0));
    case kReadEeprom:
      if (!may_read() || !eeprom_) return std::nullopt;
      return eeprom_->Read(address());
    case kReadSignature:
      if (byte_at(2) >= silicon_.signature.size()) return std::nullopt;
      return silicon_.signature[byte_at(2)];
    case kReadCalibration:
      return kCalibration[byte_at(2) % kCalibration.size()];
    case kReadConfig1:
      return Fuse(second ? 2 : 0);
    case kReadConfig2:
      return second ? Fuse(1) : lock_;
    default:
      return std::nullopt;
  }
}

std::optional<std::uint8_t> SerialPageChip::Fuse(std::size_t number) const {
  if (number >= fuses_.size()) return std::nullopt;
  return fuses_[number];
}

void SerialPageChip::Execute() {
  if (busy() || TakeEnable() || !enabled()) return;
  switch (byte_at(0)) {
    case kControl:
      return Control();
    case kLoadPageLow:
    case kLoadPageHigh:
      return LoadPage(byte_at(0) == kLoadPageHigh);
    case kWritePage:
      return WritePage();
    case kWriteEeprom:
      return WriteEeprom();
    default:
      return;
  }
}

void SerialPageChip::Control() {
  switch (byte_at(1)) {
    case kChipErase:
      return EraseChip();
    case kWriteFuseLow:
      return WriteFuse(0);
    case kWriteFuseHigh:
      return WriteFuse(1);
    case kWriteFuseExtended:
      return WriteFuse(2);
    case kWriteLock:
      return WriteLock();
    default:
      return;
  }
}

void SerialPageChip::LoadPage(bool high) {
  page_[(2 * address() + (high ? 1 : 0)) % page_.size()] = byte_at(3);
}

void SerialPageChip::WritePage() {
  if (!may_write()) return;
  flash_.ProgramPage(2 * address(), page_);
  BusyFor(silicon_.page_write);
}

void SerialPageChip::WriteEeprom() {
  if (!may_write() || !eeprom_) return;
  eeprom_->Rewrite(address(), byte_at(3));
  BusyFor(silicon_.eeprom_write);
}

void SerialPageChip::WriteFuse(std::size_t number) {
  if (!may_write() || number >= fuses_.size()) return;
  fuses_[number] = byte_at(3);
  BusyFor(silicon_.config_write);
}

void SerialPageChip::WriteLock() {
  lock_ &= static_cast<std::uint8_t>(byte_at(3) | ~kLockBits);
  BusyFor(silicon_.config_write);
}

void SerialPageChip::EraseChip() {
  flash_.Erase();
  if (eeprom_) eeprom_->Erase();
  lock_ = FlashArray::kErased;
  BusyFor(silicon_.erase);
}

}  // namespace fliglaf::simulator
