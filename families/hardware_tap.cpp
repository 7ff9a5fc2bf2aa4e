#include "families/hardware_tap.h"

#include <algorithm>
#include <array>

namespace fliglaf {
namespace {

/// How a number of bits is shifted: whole bytes, then the command that ends with TMS high.
struct Shift {
  std::int16_t bits;
  int bytes;
  std::uint8_t last;
};
constexpr std::array kShifts{
    Shift{2, 0, reg::kLastTwoBits}, Shift{10, 1, reg::kLastTwoBits}, Shift{16, 1, reg::kLastByte},
    Shift{17, 2, reg::kLastBit},    Shift{18, 2, reg::kLastTwoBits}, Shift{32, 3, reg::kLastByte},
};

}  // namespace

void HardwareTap::shiftBits(std::int32_t value, std::int16_t n) {
  auto bits = static_cast<std::uint32_t>(value);
  if (n == 1) return LastBit(bits);
  if (n == 19) return ShiftNineteen(bits);
  const auto shift = std::ranges::find(kShifts, n, &Shift::bits);
  if (shift == kShifts.end()) return;
  for (int i = 0; i < shift->bytes; ++i, bits >>= 8) Queue(Reversed(bits), reg::kShiftOut);
  Queue(Reversed(bits), shift->last);
}

void HardwareTap::ShiftNineteen(std::uint32_t bits) {
  for (int i = 0; i < 3; ++i, bits >>= 6) {
    Queue(static_cast<std::int32_t>(bits & 0x3F), reg::kShiftLow);
  }
  Queue(Reversed(bits & 1), reg::kLastBit);
}

std::int32_t HardwareTap::shiftBitsCapture(std::int32_t value, std::int16_t n) {
  switch (n) {
    case -32:
      return CaptureIdentification();
    case 1:
      LastBit(static_cast<std::uint32_t>(value));
      return 0;
    case 11:
      pulseTckN(3);
      QueueCapture();
      setTms(1);
      pulseTck();
      setTdi(0);
      return 0;
    default:
      io_.DelayMs(100);
      return 0;
  }
}

/// Of the code's fields the digest keeps what a signature needs.
std::int32_t HardwareTap::CaptureIdentification() {
  io_.FlushQueue();
  OpenInput();
  io_.DelayMs(100);
  std::array<std::int32_t, 4> bytes{};
  for (std::int32_t& byte : bytes) byte = CaptureNow();
  setTms(1);
  pulseTck();
  const std::int32_t low = bytes[0] + 256 * bytes[1];
  return (low >> 1 & 0xFF) | (low >> 12 & 0x0F) << 8 | (bytes[2] & 0x0F) << 12 |
         (bytes[3] >> 4 & 0x0F) << 16;
}

void HardwareTap::scanDr(std::int32_t value, std::int16_t n) {
  Queue(0, reg::kTmsHighLowLow);
  shiftBits(value, n);
  Queue(0, reg::kTmsHighLow);
}

void HardwareTap::scanIr(std::int32_t value, std::int16_t n) {
  setTms(1);
  pulseTck();
  Queue(0, reg::kTmsHighLow);
  setTms(0);
  pulseTck();
  shiftBits(value, n);
  Queue(0, reg::kTmsHighLow);
}

std::int32_t HardwareTap::scanDrCapture(std::int32_t value, std::int16_t n) {
  Queue(0, reg::kTmsHighLowLow);
  const std::int32_t captured = shiftBitsCapture(value, n);
  Queue(0, reg::kTmsHighLow);
  return captured;
}

}  // namespace fliglaf
