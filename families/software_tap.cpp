#include "families/software_tap.h"

#include <algorithm>
#include <array>

namespace fliglaf {
namespace {

/// How a number of bits is shifted: a byte, six bits, single ones, then the last.
struct Shift {
  std::int16_t bits;
  bool byte;
  bool six;
  int single;
};
constexpr std::array kShifts{
    Shift{4, false, false, 3},
    Shift{8, false, true, 1},
    Shift{15, true, true, 0},
    Shift{16, true, true, 1},
};

constexpr std::uint32_t kSixBits = 0x3F;

}  // namespace

void SoftwareTap::shiftBits(std::int32_t value, std::int16_t n) {
  const auto found = std::ranges::find(kShifts, n, &Shift::bits);
  const Shift shift = found != kShifts.end() ? *found : Shift{};
  auto bits = static_cast<std::uint32_t>(value);
  if (shift.byte) {
    Queue(Reversed(bits), reg::kShiftOut);
    bits >>= 8;
  }
  if (shift.six) {
    Queue(static_cast<std::int32_t>(bits & kSixBits), reg::kShiftLow);
    bits >>= 6;
  }
  for (int i = 0; i < shift.single; ++i, bits >>= 1) {
    setTdi(LowBit(bits));
    pulseTck();
  }
  LastBit(bits);
  setTdi(0);
}

std::int32_t SoftwareTap::shiftBitsCapture(std::int32_t value, std::int16_t n) {
  const auto bits = static_cast<std::uint32_t>(value);
  const auto six = static_cast<std::int32_t>(bits >> 8 & kSixBits);
  std::int32_t captured = 0;
  if (n == 15) {
    QueueCapture();
    Queue(six, reg::kShiftLow);
  } else if (n == -15) {
    io_.FlushQueue();
    captured = CaptureNow();
    io_.WriteRegister(six, reg::kShiftLow);
  } else {
    return 0;
  }
  LastBit(bits >> 14);
  setTdi(0);
  return captured;
}

void SoftwareTap::scanDr(std::int32_t value, std::int16_t n) {
  FromIdleToShiftDr();
  shiftBits(value, n);
  FromExit1ToIdle();
}

void SoftwareTap::scanIr(std::int32_t value, std::int16_t n) {
  Walk(2, 2);
  shiftBits(value, n);
  FromExit1ToIdle();
}

std::int32_t SoftwareTap::scanDrCapture(std::int32_t value, std::int16_t n) {
  FromIdleToShiftDr();
  const std::int32_t captured = shiftBitsCapture(value, n);
  FromExit1ToIdle();
  return captured;
}

void SoftwareTap::Idle() {
  setTms(0);
  pulseTck();
}

}  // namespace fliglaf
