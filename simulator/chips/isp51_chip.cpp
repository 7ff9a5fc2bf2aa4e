#include "simulator/chips/isp51_chip.h"

namespace fliglaf::simulator {
namespace {

constexpr std::uint8_t kControl = 0xAC;
constexpr std::uint8_t kProgrammingEnable = 0x53;
constexpr std::uint8_t kEnableAnswer = 0x69;
constexpr std::uint8_t kReadPage = 0x30;
constexpr std::uint8_t kWritePage = 0x50;
constexpr std::uint8_t kReadSignature = 0x28;
constexpr int kPageBytes = 256;
constexpr std::uint8_t kLockLevels = 3;
constexpr std::uint8_t kHiddenByte = 0x00;

/// From the rise of reset to the first instruction: the oscillator has to start.
constexpr std::int64_t kStartUp = 10 * Clock::kMillisecond;

/// Its answer comes back through a buffer with an enable of its own.
constexpr SerialWiring kWiring = [] {
  SerialWiring wiring = kSerialWiring;
  wiring.enable_from_chip = LinesOf(0, 0x20);
  return wiring;
}();

/// Second bytes of control instructions, by their published patterns.
constexpr bool IsChipErase(std::uint8_t byte) { return (byte & 0xE0) == 0x80; }
constexpr bool IsLockWrite(std::uint8_t byte) { return (byte & 0xFC) == 0xE0; }

}  // namespace

Isp51Chip::Isp51Chip(const Clock& clock, std::size_t flash_bytes,
                     std::array<std::uint8_t, 3> signature, const Isp51Timing& timing)
    : SerialChip(clock, kWiring, {.after_reset = kStartUp}),
      flash_(flash_bytes),
      signature_(signature),
      timing_(timing) {}

std::vector<MemoryArea> Isp51Chip::Memory() {
  return {{"flash", flash_.cells(), FlashArray::kErased},
          {"lock", {&lock_level_, 1}, 0, kLockLevels}};
}

void Isp51Chip::Restart() {
  enabled_ = false;
  phase_ = Phase::kInstruction;
  instruction_bytes_ = 0;
}

void Isp51Chip::TakeByte(std::uint8_t byte) {
  if (phase_ == Phase::kInstruction) {
    TakeInstructionByte(byte);
  } else {
    TakePageByte(byte);
  }
}

void Isp51Chip::TakeInstructionByte(std::uint8_t byte) {
  instruction_[instruction_bytes_++] = byte;
  if (instruction_bytes_ == 2 && enabled_) {
    if (instruction_[0] == kReadPage) return StartPage(Phase::kReadingPage);
    if (instruction_[0] == kWritePage) return StartPage(Phase::kWritingPage);
  }
  if (instruction_bytes_ == 3) {
    if (instruction_[0] == kControl && instruction_[1] == kProgrammingEnable) {
      Load(kEnableAnswer);
    } else if (instruction_[0] == kReadSignature && enabled_) {
      Load(signature_[instruction_[1] % signature_.size()]);
    }
  }
  if (instruction_bytes_ < instruction_.size()) return;
  instruction_bytes_ = 0;
  Execute();
}

void Isp51Chip::StartPage(Phase phase) {
  phase_ = phase;
  page_ = instruction_[1] & 0x1FU;
  page_bytes_ = 0;
  instruction_bytes_ = 0;
  if (phase == Phase::kReadingPage) OfferPageByte();
}

void Isp51Chip::OfferPageByte() {
  const auto address = page_ * kPageBytes + static_cast<std::uint32_t>(page_bytes_);
  Load(may_read() && !busy() ? flash_.Read(address) : kHiddenByte);
}

void Isp51Chip::TakePageByte(std::uint8_t byte) {
  if (phase_ == Phase::kWritingPage && may_write() && !busy()) {
    flash_.Program(page_ * kPageBytes + static_cast<std::uint32_t>(page_bytes_), byte);
    BusyFor(timing_.byte_write);
    busy_with_lock_ = false;
  }
  ++page_bytes_;
  if (page_bytes_ == kPageBytes) {
    phase_ = Phase::kInstruction;
  } else if (phase_ == Phase::kReadingPage) {
    OfferPageByte();
  }
}

void Isp51Chip::Execute() {
  if (instruction_[0] != kControl) return;
  if (instruction_[1] == kProgrammingEnable) {
    enabled_ = true;
  } else if (IsLockWrite(instruction_[1])) {
    WriteLockLevel(instruction_[1] & 0x03);
  } else if (IsChipErase(instruction_[1]) && enabled_ && !busy()) {
    flash_.Erase();
    lock_level_ = 0;
    BusyFor(timing_.chip_erase);
    busy_with_lock_ = false;
  }
}

/// The levels are written one straight after the other, with no wait between them: a lock write is
/// taken while the one before it is still in progress, and keeps the memory busy for its own time.
void Isp51Chip::WriteLockLevel(std::uint8_t level) {
  if (!enabled_ || (busy() && !busy_with_lock_)) return;
  if (level == lock_level_ + 1) lock_level_ = level;
  BusyFor(timing_.lock_write);
  busy_with_lock_ = true;
}

}  // namespace fliglaf::simulator
