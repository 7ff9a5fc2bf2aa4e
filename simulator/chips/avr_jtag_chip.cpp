#include "simulator/chips/avr_jtag_chip.h"

#include <algorithm>

namespace fliglaf::simulator {
namespace {

namespace instruction {
constexpr std::uint32_t kIdCode = 0x1;
constexpr std::uint32_t kProgEnable = 0x4;
constexpr std::uint32_t kProgCommands = 0x5;
constexpr std::uint32_t kProgPageLoad = 0x6;
constexpr std::uint32_t kProgPageRead = 0x7;
constexpr std::uint32_t kAvrReset = 0xC;
}  // namespace instruction

constexpr std::uint64_t kEnableSignature = 0xA370;
/// The maker's code in the identification register.
constexpr std::uint64_t kMaker = 0x01F;

/// Control signals of a programming command. kWrite and kOutput act when they are low.
constexpr std::uint16_t kOutput = 1 << 8;
constexpr std::uint16_t kWrite = 1 << 9;
constexpr std::uint16_t kByteSelect1 = 1 << 10;
constexpr std::uint16_t kByteSelect2 = 1 << 11;
constexpr std::uint16_t kPageLatch = 1 << 14;
/// What the byte is.
constexpr std::uint16_t kAction = 3 << 12;
constexpr std::uint16_t kLoadAddress = 0 << 12;
constexpr std::uint16_t kLoadData = 1 << 12;
constexpr std::uint16_t kLoadMode = 2 << 12;

/// In the result of a command: ready.
constexpr std::uint64_t kReady = 1 << 9;

namespace mode {
constexpr std::uint8_t kReadFlash = 0x02;
constexpr std::uint8_t kReadEeprom = 0x03;
constexpr std::uint8_t kReadConfig = 0x04;
constexpr std::uint8_t kReadSignature = 0x08;
constexpr std::uint8_t kWriteFlash = 0x10;
constexpr std::uint8_t kWriteEeprom = 0x11;
constexpr std::uint8_t kWriteLock = 0x20;
constexpr std::uint8_t kWriteFuse = 0x40;
constexpr std::uint8_t kEraseChip = 0x80;
}  // namespace mode

/// Fuses as a new chip has them: internal oscillator, serial and JTAG programming on.
constexpr std::uint8_t kFactoryLow = 0x62;
constexpr std::uint8_t kFactoryHigh = 0x99;
constexpr std::uint8_t kFactoryExtended = 0xFF;
/// Bits of the high fuse byte; 0 is programmed.
constexpr std::uint8_t kJtagEnable = 0x40;
constexpr std::uint8_t kEepromSave = 0x08;

/// Pages of EEPROM in the bytes of a page of flash.
constexpr std::size_t kEepromPages = 32;

/// Implemented lock bits; the others read as 1.
constexpr std::uint8_t kLockBits = 0x3F;

}  // namespace

AvrJtagChip::AvrJtagChip(const Clock& clock, const JtagWiring& wiring, const Silicon& silicon,
                         const Features& features)
    : JtagChip(clock, wiring, {.length = 4, .at_reset = instruction::kIdCode, .capture = 0x1}),
      silicon_(silicon),
      features_(features),
      flash_(silicon.flash_bytes),
      fuse_low_(kFactoryLow),
      fuse_high_(kFactoryHigh),
      fuse_extended_(kFactoryExtended),
      page_(silicon.page_bytes, FlashArray::kErased),
      eeprom_page_(std::max<std::size_t>(silicon.page_bytes / kEepromPages, 1)) {
  if (silicon.eeprom_bytes > 0) eeprom_.emplace(silicon.eeprom_bytes);
}

std::vector<MemoryArea> AvrJtagChip::Memory() {
  std::vector<MemoryArea> areas{{"flash", flash_.cells(), FlashArray::kErased}};
  if (eeprom_) areas.push_back({"eeprom", eeprom_->cells(), FlashArray::kErased});
  areas.push_back({"fuse-low", {&fuse_low_, 1}, kFactoryLow});
  areas.push_back({"fuse-high", {&fuse_high_, 1}, kFactoryHigh});
  if (features_.extended_fuses) {
    areas.push_back({"fuse-extended", {&fuse_extended_, 1}, kFactoryExtended});
  }
  areas.push_back({"lock", {&lock_, 1}, FlashArray::kErased});
  return areas;
}

void AvrJtagChip::Restart() {
  in_reset_ = enabled_ = false;
  mode_ = 0;
  command_ = 0;
  address_ = 0;
  Listen((fuse_high_ & kJtagEnable) == 0);
}

void AvrJtagChip::TestLogicReset() { in_reset_ = enabled_ = false; }

void AvrJtagChip::InstructionChanged() { page_bytes_passed_ = 0; }

JtagChip::DataRegister AvrJtagChip::CaptureDr() {
  switch (JtagChip::instruction()) {
    case instruction::kIdCode:
      return {.bits = std::uint64_t{silicon_.signature[1]} << 20 |
                      std::uint64_t{silicon_.signature[2]} << 12 | kMaker << 1 | 1,
              .length = 32};
    case instruction::kAvrReset:
      return {.bits = in_reset_ ? 1U : 0U, .length = 1};
    case instruction::kProgEnable:
      return {.bits = 0, .length = 16};
    case instruction::kProgCommands:
      return {.bits = ReadOut() | (busy() ? 0 : kReady), .length = 15};
    case instruction::kProgPageLoad:
      return {.bits = 0, .length = 8, .streams = features_.long_page_register};
    case instruction::kProgPageRead:
      if (features_.long_page_register) return {.bits = 0, .length = 8, .streams = true};
      return {.bits = NextPageByte(), .length = 8};
    default:
      return {};
  }
}

void AvrJtagChip::UpdateDr(std::uint64_t bits) {
  switch (JtagChip::instruction()) {
    case instruction::kAvrReset:
      in_reset_ = (bits & 1) != 0;
      return;
    case instruction::kProgEnable:
      enabled_ = in_reset_ && bits == kEnableSignature;
      return;
    case instruction::kProgCommands:
      return Execute(static_cast<std::uint16_t>(bits));
    case instruction::kProgPageLoad:
      if (!features_.long_page_register) LoadPageByte(static_cast<std::uint8_t>(bits));
      return;
    default:
      return;
  }
}

/// The long registers move a byte on by themselves; the first one that comes out means nothing.
std::uint8_t AvrJtagChip::TakeByte(std::uint8_t byte) {
  if (JtagChip::instruction() == instruction::kProgPageLoad) {
    LoadPageByte(byte);
    return byte;
  }
  return NextPageByte();
}

void AvrJtagChip::LoadPageByte(std::uint8_t byte) {
  if (!programming() || busy() || mode_ != mode::kWriteFlash) return;
  page_[(2 * address_ + page_bytes_passed_++) % page_.size()] = byte;
}

std::uint8_t AvrJtagChip::NextPageByte() {
  if (!programming() || busy() || mode_ != mode::kReadFlash) return FlashArray::kErased;
  return ReadFlash(2 * address_ + page_bytes_passed_++);
}

std::uint8_t AvrJtagChip::ReadFlash(std::uint32_t byte) const {
  return may_read() ? flash_.Read(byte) : FlashArray::kErased;
}

void AvrJtagChip::Execute(std::uint16_t command) {
  if (!programming() || busy()) return;
  const auto falls = static_cast<std::uint16_t>(command_ & ~command);
  const auto rises = static_cast<std::uint16_t>(command & ~command_);
  command_ = command;
  const auto byte = static_cast<std::uint8_t>(command);
  switch (command & kAction) {
    case kLoadAddress:
      return LoadAddress(command, byte);
    case kLoadData:
      data_[(command & kByteSelect1) != 0 ? 1 : 0] = byte;
      return;
    case kLoadMode:
      mode_ = byte;
      return;
    default:
      break;
  }
  if ((rises & kPageLatch) != 0) LatchData();
  if ((falls & kWrite) != 0) Write(command);
}

void AvrJtagChip::LoadAddress(std::uint16_t command, std::uint8_t byte) {
  const int shift = (command & kByteSelect2) != 0 ? 16 : (command & kByteSelect1) != 0 ? 8 : 0;
  address_ = (address_ & ~(0xFFU << shift)) | static_cast<std::uint32_t>(byte) << shift;
}

void AvrJtagChip::LatchData() {
  if (mode_ == mode::kWriteEeprom) {
    eeprom_page_[address_ % eeprom_page_.size()] = data_[0];
  } else if (mode_ == mode::kWriteFlash) {
    const std::size_t word = 2 * std::size_t{address_};
    for (std::size_t i = 0; i < data_.size(); ++i) page_[(word + i) % page_.size()] = data_[i];
  }
}

void AvrJtagChip::Write(std::uint16_t command) {
  if (mode_ == mode::kEraseChip) return EraseChip();
  if (mode_ == mode::kWriteLock) {
    lock_ &= static_cast<std::uint8_t>(data_[0] | ~kLockBits);
    return BusyFor(silicon_.config_write);
  }
  if (!may_write()) return;
  switch (mode_) {
    case mode::kWriteFlash:
      return WriteFlashPage();
    case mode::kWriteEeprom:
      return WriteEepromPage();
    case mode::kWriteFuse:
      return WriteFuse(command);
    default:
      return;
  }
}

void AvrJtagChip::WriteFlashPage() {
  flash_.ProgramPage(2 * address_, page_);
  BusyFor(silicon_.page_write);
}

void AvrJtagChip::WriteEepromPage() {
  const std::uint32_t size = static_cast<std::uint32_t>(eeprom_page_.size());
  const std::uint32_t start = address_ / size * size;
  for (std::uint32_t i = 0; i < size; ++i) {
    if (eeprom_ && eeprom_page_[i]) eeprom_->Rewrite(start + i, *eeprom_page_[i]);
    eeprom_page_[i].reset();
  }
  BusyFor(silicon_.eeprom_write);
}

void AvrJtagChip::WriteFuse(std::uint16_t command) {
  if ((command & kByteSelect2) != 0) {
    if (features_.extended_fuses) fuse_extended_ = data_[0];
  } else {
    ((command & kByteSelect1) != 0 ? fuse_high_ : fuse_low_) = data_[0];
  }
  BusyFor(silicon_.config_write);
}

void AvrJtagChip::EraseChip() {
  flash_.Erase();
  if (eeprom_ && (fuse_high_ & kEepromSave) != 0) eeprom_->Erase();
  lock_ = FlashArray::kErased;
  BusyFor(silicon_.erase);
}

/// What the command before has put out; a command that puts nothing out gives its own byte back.
std::uint8_t AvrJtagChip::ReadOut() const {
  if (!programming() || busy()) return FlashArray::kErased;
  if ((command_ & kOutput) != 0) return static_cast<std::uint8_t>(command_);
  const bool high = (command_ & kByteSelect1) != 0;
  switch (mode_) {
    case mode::kReadFlash:
      return ReadFlash(2 * address_ + (high ? 1 : 0));
    case mode::kReadEeprom:
      return eeprom_ && may_read() ? eeprom_->Read(address_) : FlashArray::kErased;
    case mode::kReadSignature:
      return high ? kCalibration
                  : silicon_.signature[(address_ & 0x03) % silicon_.signature.size()];
    case mode::kReadConfig:
      return ReadConfig();
    default:
      return FlashArray::kErased;
  }
}

std::uint8_t AvrJtagChip::ReadConfig() const {
  switch (command_ & (kByteSelect1 | kByteSelect2)) {
    case 0:
      return fuse_low_;
    case kByteSelect1:
      return lock_;
    case kByteSelect2:
      return fuse_extended_;
    default:
      return fuse_high_;
  }
}

}  // namespace fliglaf::simulator
