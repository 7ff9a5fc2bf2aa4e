#include "simulator/shifter.h"

namespace fliglaf::simulator {
namespace {

constexpr int kBitsOfAByte = 8;

}  // namespace

void Shifter::OutHighFirst(const ShifterBytes& bytes, std::uint8_t value) {
  for (int bit = kBitsOfAByte - 1; bit >= 0; --bit) ClockBit(bytes, (value >> bit & 1) != 0);
  Rest(bytes);
}

void Shifter::OutLowFirst(const ShifterBytes& bytes, std::uint8_t value) {
  const int count =
      bytes.low_bits >= 1 && bytes.low_bits <= kBitsOfAByte ? bytes.low_bits : kBitsOfAByte;
  for (int bit = 0; bit < count; ++bit) ClockBit(bytes, (value >> bit & 1) != 0);
  Rest(bytes);
}

std::uint8_t Shifter::In(const ShifterBytes& bytes) {
  unsigned value = 0;
  for (int bit = 0; bit < kBitsOfAByte; ++bit) {
    value = value << 1 | (ClockBit(bytes, false) ? 1U : 0U);
  }
  Rest(bytes);
  return static_cast<std::uint8_t>(value);
}

/// One clock pulse; the result is the input line as the clock has just risen. The data line changes
/// while the clock is low.
bool Shifter::ClockBit(const ShifterBytes& bytes, bool data) {
  const auto low = static_cast<std::uint8_t>(bytes.fixed | (data ? bytes.data_out : 0));
  wires_.Write(bytes.line_register, low);
  clock_.Advance(kHalfBit);
  wires_.Write(bytes.line_register, low | bytes.clock);
  const bool sample = wires_.Sample(bytes.line_register, bytes.data_in);
  clock_.Advance(kHalfBit);
  return sample;
}

void Shifter::Rest(const ShifterBytes& bytes) { wires_.Write(bytes.line_register, bytes.fixed); }

}  // namespace fliglaf::simulator
