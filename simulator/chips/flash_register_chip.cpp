#include "simulator/chips/flash_register_chip.h"

#include <algorithm>

namespace fliglaf::simulator {
namespace {

constexpr std::uint32_t kIdCodeAtReset = 0x0004;
/// Instructions without the bits that steer the core.
constexpr std::uint32_t kCommandBits = 0x0FFF;
constexpr std::uint32_t kIdCode = 0x004;
constexpr std::uint32_t kCoreReset = 2;
constexpr std::uint32_t kCoreHalt = 1;

/// The instruction of the control register; the other three follow.
constexpr std::uint32_t kSetA = 0x4082;
constexpr std::uint32_t kSetB = 0x3082;

/// Bits of a register scan: the value below the operation.
constexpr int kValueBits = 18;
constexpr std::uint64_t kReadOperation = 2;
constexpr std::uint64_t kWriteOperation = 3;
/// The answer of a register that cannot be accessed now.
constexpr std::uint64_t kBusyAnswer = 1;
/// Bits below the byte in the data register.
constexpr std::uint32_t kFailed = 2;
constexpr int kByteShift = 2;

/// Fields of the control register.
constexpr std::uint8_t kSecondArea = 0x80;
constexpr std::uint8_t kWriteMode = 0x70;
constexpr std::uint8_t kProgram = 0x10;
constexpr std::uint8_t kErase = 0x20;
constexpr std::uint8_t kReadMode = 0x0F;
constexpr std::uint8_t kReadAhead = 1;
constexpr std::uint8_t kReadByte = 2;

constexpr std::uint8_t kEraseKey = 0xA5;
/// The divider that fits the clock that these chips start with.
constexpr std::uint8_t kDividerBits = 0x0F;
constexpr std::uint8_t kDivider = 6;

constexpr std::uint8_t kWriteLock = 0;
constexpr std::uint8_t kReadLock = 1;
constexpr std::uint32_t kLockBlocks = 8;

}  // namespace

FlashRegisterChip::FlashRegisterChip(const Clock& clock, const JtagWiring& wiring,
                                     const Silicon& silicon, const Features& features)
    : JtagChip(clock, wiring, {.length = 16, .at_reset = kIdCodeAtReset, .capture = 0x0001}),
      silicon_(silicon),
      features_(features),
      flash_(flash_bytes()) {
  if (silicon.eeprom_bytes > 0) second_.emplace(silicon.eeprom_bytes);
}

std::vector<MemoryArea> FlashRegisterChip::Memory() {
  const auto cells = flash_.cells();
  std::vector<MemoryArea> areas{
      {"flash", cells.first(silicon_.flash_bytes), FlashArray::kErased},
      {"lock", cells.subspan(silicon_.flash_bytes, 2), FlashArray::kErased},
      {"last-page", cells.subspan(silicon_.flash_bytes + 2), FlashArray::kErased}};
  if (second_) areas.push_back({"second", second_->cells(), FlashArray::kErased});
  return areas;
}

void FlashRegisterChip::Restart() {
  const auto lock = static_cast<std::uint32_t>(silicon_.flash_bytes);
  locks_ = {flash_.Read(lock + kWriteLock), flash_.Read(lock + kReadLock)};
  reset_ = halted_ = false;
  ClearRegisters();
}

void FlashRegisterChip::ClearRegisters() {
  control_ = data_ = scale_ = 0;
  address_ = latched_ = 0;
  unread_ = failed_ = false;
}

void FlashRegisterChip::InstructionChanged() {
  switch (instruction() >> 12) {
    case kCoreReset:
      reset_ = true;
      halted_ = false;
      return ClearRegisters();
    case kCoreHalt:
      halted_ = reset_;
      return;
    default:
      return;
  }
}

std::optional<FlashRegisterChip::Register> FlashRegisterChip::Selected() const {
  const std::uint32_t number = instruction() - (features_.wide ? kSetB : kSetA);
  if (!halted_ || number > static_cast<std::uint32_t>(Register::kScale)) return std::nullopt;
  return static_cast<Register>(number);
}

int FlashRegisterChip::WidthOf(Register selected) const {
  constexpr int kByte = 8;
  if (selected != Register::kAddress) return kByte;
  return features_.wide ? 17 : 16;
}

JtagChip::DataRegister FlashRegisterChip::CaptureDr() {
  if ((instruction() & kCommandBits) == kIdCode) {
    const auto& [maker, part, version] = silicon_.signature;
    return {.bits = std::uint64_t{version} << 28 | std::uint64_t{part} << 12 |
                    std::uint64_t{maker} << 1 | 1,
            .length = 32};
  }
  if (!Selected()) return {};
  return {.bits = busy() ? kBusyAnswer : std::uint64_t{latched_} << 1, .length = kValueBits + 2};
}

void FlashRegisterChip::UpdateDr(std::uint64_t bits) {
  const auto selected = Selected();
  if (!selected || busy()) return;
  const std::uint64_t operation = bits >> kValueBits;
  if (operation == kReadOperation) {
    Latch(*selected);
  } else if (operation == kWriteOperation) {
    const int width = WidthOf(*selected);
    const std::uint64_t value = bits >> (kValueBits - width) & ((1U << width) - 1);
    Write(*selected, static_cast<std::uint32_t>(value));
  }
}

void FlashRegisterChip::Write(Register selected, std::uint32_t value) {
  switch (selected) {
    case Register::kControl:
      control_ = static_cast<std::uint8_t>(value);
      return;
    case Register::kData:
      data_ = static_cast<std::uint8_t>(value);
      return AccessDataToWrite();
    case Register::kAddress:
      address_ = value;
      unread_ = false;
      return;
    case Register::kScale:
      scale_ = static_cast<std::uint8_t>(value);
      return;
  }
}

void FlashRegisterChip::Latch(Register selected) {
  switch (selected) {
    case Register::kControl:
      latched_ = control_;
      return;
    case Register::kData:
      latched_ = static_cast<std::uint32_t>(data_) << kByteShift | (failed_ ? kFailed : 0);
      return AccessDataToRead();
    case Register::kAddress:
      latched_ = address_;
      return;
    case Register::kScale:
      latched_ = scale_;
      return;
  }
}

void FlashRegisterChip::AccessDataToRead() {
  const int mode = control_ & kReadMode;
  if (mode == kReadAhead || (mode == kReadByte && !unread_)) {
    data_ = ReadCell();
    unread_ = true;
  } else {
    unread_ = false;
  }
}

void FlashRegisterChip::AccessDataToWrite() {
  const int mode = control_ & kWriteMode;
  failed_ = false;
  if (mode == kProgram) {
    ProgramCell();
  } else if (mode == kErase) {
    ErasePage();
  }
}

FlashRegisterChip::Place FlashRegisterChip::At(std::uint32_t address) {
  FlashArray* const second = second_ ? &*second_ : nullptr;
  if (features_.second_apart && (control_ & kSecondArea) != 0) return {second, address};
  if (address < flash_bytes()) return {&flash_, address};
  const auto beyond = static_cast<std::uint32_t>(address - flash_bytes());
  if (!features_.second_apart && beyond < silicon_.eeprom_bytes) return {second, beyond};
  return {};
}

/// Lock bits are counted from the lowest eighth of the flash up.
bool FlashRegisterChip::Locked(const Place& place, std::uint8_t lock) const {
  if (place.memory != &flash_) return false;
  const auto block = static_cast<std::uint32_t>((flash_bytes() + kLockBlocks - 1) / kLockBlocks);
  return (locks_[lock] >> place.address / block & 1) == 0;
}

std::uint8_t FlashRegisterChip::ReadCell() {
  const Place place = At(address_++);
  failed_ = place.memory == nullptr || Locked(place, kReadLock);
  return failed_ ? 0 : place.memory->Read(place.address);
}

void FlashRegisterChip::ProgramCell() {
  const Place place = At(address_++);
  failed_ = place.memory == nullptr || Locked(place, kWriteLock);
  if (failed_ || (scale_ & kDividerBits) != kDivider) return;
  place.memory->Program(place.address, data_);
  BusyFor(silicon_.byte_write);
}

void FlashRegisterChip::ErasePage() {
  const Place place = At(address_);
  const auto page = static_cast<std::uint32_t>(silicon_.page_bytes);
  const bool lock_page =
      place.memory == &flash_ && place.address / page == silicon_.flash_bytes / page;
  failed_ =
      place.memory == nullptr || data_ != kEraseKey || (Locked(place, kWriteLock) && !lock_page);
  if (failed_ || (scale_ & kDividerBits) != kDivider) return;
  BusyFor(silicon_.erase);
  if (lock_page) {
    flash_.Erase();
    locks_.fill(FlashArray::kErased);
  } else {
    place.memory->Erase(place.address % place.memory->cells().size() / page * page, page);
  }
}

}  // namespace fliglaf::simulator
