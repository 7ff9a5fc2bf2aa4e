#include "simulator/shifter.h"

namespace fliglaf::simulator {
namespace {

constexpr int kBitsOfAByte = 8;

/// The data line of a bit.
std::uint8_t Data(const ShifterBytes& bytes, bool bit) { return bit ? bytes.data_out : 0; }

}  // namespace

void Shifter::OutHighFirst(const ShifterBytes& bytes, std::uint8_t value) {
  const Wires::Driving driving(wires_, bytes.line_register, bytes.clock | bytes.data_out);
  for (int bit = kBitsOfAByte - 1; bit >= 0; --bit) {
    ClockBit(bytes, Data(bytes, (value >> bit & 1) != 0));
  }
  Rest(bytes);
}

void Shifter::OutLowFirst(const ShifterBytes& bytes, std::uint8_t value) {
  const bool group = bytes.low_bits >= 1 && bytes.low_bits <= kBitsOfAByte;
  OutLowBits(bytes, value, group ? bytes.low_bits : kBitsOfAByte);
}

void Shifter::OutLowBits(const ShifterBytes& bytes, std::uint8_t value, int count) {
  const Wires::Driving driving(wires_, bytes.line_register, bytes.clock | bytes.data_out);
  for (int bit = 0; bit < count; ++bit) {
    ClockBit(bytes, Data(bytes, (value >> bit & 1) != 0));
  }
  Rest(bytes);
}

void Shifter::OutLast(const ShifterBytes& bytes, std::uint8_t value, int count) {
  const Wires::Driving driving(wires_, bytes.line_register, bytes.clock | bytes.data_out);
  for (int bit = kBitsOfAByte - 1; bit >= kBitsOfAByte - count; --bit) {
    const std::uint8_t data = Data(bytes, (value >> bit & 1) != 0);
    const bool last = bit == kBitsOfAByte - count;
    ClockBit(bytes, last ? data | bytes.mode_select : data);
  }
  Rest(bytes);
}

void Shifter::Walk(const ShifterBytes& bytes, int low_pulses) {
  const Wires::Driving driving(wires_, bytes.line_register, bytes.clock | bytes.data_out);
  ClockBit(bytes, bytes.mode_select);
  for (int pulse = 0; pulse < low_pulses; ++pulse) ClockBit(bytes, 0);
  Rest(bytes);
}

std::uint8_t Shifter::In(const ShifterBytes& bytes) {
  const Wires::Driving driving(wires_, bytes.line_register, bytes.clock);
  unsigned value = 0;
  for (int bit = 0; bit < kBitsOfAByte; ++bit) {
    ClockBit(bytes, 0);
    // The input as the clock has risen: the chip puts its next bit out when it falls.
    value = value << 1 | (wires_.Sample(bytes.line_register, bytes.data_in) ? 1U : 0U);
  }
  Rest(bytes);
  return static_cast<std::uint8_t>(value);
}

/// The lines between two writes.
void Shifter::Rest(const ShifterBytes& bytes) {
  wires_.Write(bytes.line_register,
               bytes.clock_rests_high == 1 ? bytes.fixed | bytes.clock : bytes.fixed);
}

/// One clock pulse with the lines `high` high, which leaves the clock high. They change while the
/// clock is low.
void Shifter::ClockBit(const ShifterBytes& bytes, std::uint8_t high) {
  const auto low = static_cast<std::uint8_t>(bytes.fixed | high);
  wires_.Write(bytes.line_register, low, kHalfBit);
  wires_.Write(bytes.line_register, low | bytes.clock, kHalfBit);
}

}  // namespace fliglaf::simulator
