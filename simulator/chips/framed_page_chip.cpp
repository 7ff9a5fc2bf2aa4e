#include "simulator/chips/framed_page_chip.h"

namespace fliglaf::simulator {
namespace {

constexpr SerialWiring kWiring = [] {
  SerialWiring wiring = kSerialWiring;
  wiring.select = LinesOf(0, 0x04);
  return wiring;
}();

/// From the rise of reset to the first instruction.
constexpr std::int64_t kAfterReset = 10 * Clock::kMillisecond;

constexpr std::uint8_t kStart = 0xAA;
constexpr std::size_t kHeadBytes = 4;  // start, instruction, address

/// Second bytes.
constexpr std::uint8_t kReadPage = 0x30;
constexpr std::uint8_t kReadSignature = 0x38;
constexpr std::uint8_t kWritePage = 0x50;
constexpr std::uint8_t kReadFuses = 0x61;
constexpr std::uint8_t kReadLock = 0x64;
constexpr std::uint8_t kChipErase = 0x8A;
constexpr std::uint8_t kControl = 0xAC;
constexpr std::uint8_t kProgrammingEnable = 0x53;
constexpr std::uint8_t kWriteFuses = 0xE1;
constexpr std::uint8_t kWriteLock = 0xE4;

constexpr std::uint8_t kHiddenByte = 0x00;

}  // namespace

FramedPageChip::FramedPageChip(const Clock& clock, const Silicon& silicon)
    : SerialChip(clock, kWiring, {.after_reset = kAfterReset}),
      silicon_(silicon),
      flash_(silicon.flash_bytes) {}

std::vector<MemoryArea> FramedPageChip::Memory() {
  return {{"flash", flash_.cells(), FlashArray::kErased},
          {"fuses", {&fuses_, 1}, kFactoryFuses, kAllFuseBits},
          {"lock", {&lock_, 1}, kAllLockBits, kAllLockBits}};
}

void FramedPageChip::Restart() {
  answers_ = (fuses_ & kIspDisable) == 0;
  enabled_ = false;
  frame_.clear();
}

void FramedPageChip::TakeByte(std::uint8_t byte) {
  if (!answers_) return;
  frame_.push_back(byte);
  if (frame_.size() >= kHeadBytes && frame_[0] == kStart && enabled_) Load(Answer());
}

std::uint8_t FramedPageChip::Answer() const {
  const std::size_t offset = frame_.size() - kHeadBytes;
  if (busy()) return kHiddenByte;
  switch (frame_[1]) {
    case kReadPage:
      return may_read() ? flash_.Read(PageAddress(offset)) : kHiddenByte;
    case kReadSignature:
      return silicon_.signature[offset % silicon_.signature.size()];
    case kReadFuses:
      return fuses_ | static_cast<std::uint8_t>(~kAllFuseBits);
    case kReadLock:
      return lock_ | static_cast<std::uint8_t>(~kAllLockBits);
    default:
      return kHiddenByte;
  }
}

std::uint32_t FramedPageChip::PageAddress(std::size_t offset) const {
  const std::size_t address = static_cast<std::size_t>(frame_[2]) << 8 | frame_[3];
  const std::size_t page = address - address % silicon_.page_bytes;
  return static_cast<std::uint32_t>(page + (address + offset) % silicon_.page_bytes);
}

void FramedPageChip::Released() {
  if (frame_.size() < 2 || frame_[0] != kStart || busy()) return;
  if (frame_[1] == kControl) {
    enabled_ = enabled_ || (frame_.size() > 2 && frame_[2] == kProgrammingEnable);
  } else if (frame_[1] == kChipErase && enabled_) {
    EraseChip();
  } else if (frame_.size() > kHeadBytes && enabled_) {
    Write();
  }
}

/// An instruction with data after its head.
void FramedPageChip::Write() {
  if (frame_[1] == kWritePage && may_write()) {
    WritePage();
  } else if (frame_[1] == kWriteFuses && may_write()) {
    fuses_ = frame_[kHeadBytes] & kAllFuseBits;
    BusyFor(silicon_.config_write);
  } else if (frame_[1] == kWriteLock) {
    lock_ &= frame_[kHeadBytes];
    BusyFor(silicon_.config_write);
  }
}

void FramedPageChip::WritePage() {
  for (std::size_t i = kHeadBytes; i < frame_.size(); ++i) {
    flash_.Program(PageAddress(i - kHeadBytes), frame_[i]);
  }
  BusyFor(silicon_.page_write);
}

void FramedPageChip::EraseChip() {
  flash_.Erase();
  lock_ = kAllLockBits;
  BusyFor(silicon_.erase);
}

}  // namespace fliglaf::simulator
