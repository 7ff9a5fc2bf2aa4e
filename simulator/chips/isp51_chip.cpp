#include "simulator/chips/isp51_chip.h"

namespace fliglaf::simulator {
namespace {

constexpr std::uint8_t kEnableAnswer = 0x69;
constexpr std::uint8_t kReadPage = 0x30;
constexpr std::uint8_t kWritePage = 0x50;
constexpr std::uint8_t kReadSignature = 0x28;
constexpr std::size_t kInstructionBytes = 4;
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

Isp51Chip::Isp51Chip(const Clock& clock, const Silicon& silicon)
    : InstructionChip(clock, kWiring, {.after_reset = kStartUp}, kInstructionBytes),
      silicon_(silicon),
      flash_(silicon.flash_bytes) {}

std::vector<MemoryArea> Isp51Chip::Memory() {
  return {{"flash", flash_.cells(), FlashArray::kErased},
          {"lock", {&lock_level_, 1}, 0, kLockLevels}};
}

void Isp51Chip::Restart() {
  InstructionChip::Restart();
  phase_ = Phase::kInstruction;
}

/// The bytes of a page follow the second byte of its instruction.
void Isp51Chip::TakeByte(std::uint8_t byte) {
  if (phase_ != Phase::kInstruction) return TakePageByte(byte);
  InstructionChip::TakeByte(byte);
  if (bytes_taken() != 2 || !enabled()) return;
  if (byte_at(0) == kReadPage) StartPage(Phase::kReadingPage);
  if (byte_at(0) == kWritePage) StartPage(Phase::kWritingPage);
}

std::optional<std::uint8_t> Isp51Chip::Answer() const {
  if (IsEnable()) return kEnableAnswer;
  if (byte_at(0) == kReadSignature && enabled()) {
    return silicon_.signature[byte_at(1) % silicon_.signature.size()];
  }
  return std::nullopt;
}

void Isp51Chip::StartPage(Phase phase) {
  phase_ = phase;
  page_ = byte_at(1) & 0x1FU;
  page_bytes_ = 0;
  ForgetBytes();
  if (phase == Phase::kReadingPage) OfferPageByte();
}

void Isp51Chip::OfferPageByte() {
  const auto address = page_ * kPageBytes + static_cast<std::uint32_t>(page_bytes_);
  Load(may_read() && !busy() ? flash_.Read(address) : kHiddenByte);
}

void Isp51Chip::TakePageByte(std::uint8_t byte) {
  if (phase_ == Phase::kWritingPage && may_write() && !busy()) {
    flash_.Program(page_ * kPageBytes + static_cast<std::uint32_t>(page_bytes_), byte);
    BusyFor(silicon_.byte_write);
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
  if (TakeEnable() || byte_at(0) != kControl) return;
  if (IsLockWrite(byte_at(1))) {
    WriteLockLevel(byte_at(1) & 0x03);
  } else if (IsChipErase(byte_at(1)) && enabled() && !busy()) {
    flash_.Erase();
    lock_level_ = 0;
    BusyFor(silicon_.erase);
    busy_with_lock_ = false;
  }
}

/// The levels are written one straight after the other, with no wait between them: a lock write is
/// taken while the one before it is still in progress, and keeps the memory busy for its own time.
void Isp51Chip::WriteLockLevel(std::uint8_t level) {
  if (!enabled() || (busy() && !busy_with_lock_)) return;
  if (level == lock_level_ + 1) lock_level_ = level;
  BusyFor(silicon_.lock_write);
  busy_with_lock_ = true;
}

}  // namespace fliglaf::simulator
