#include "simulator/shifter.h"

namespace fliglaf::simulator {
namespace {

constexpr int kBitsOfAByte = 8;

/// The data line of a bit.
std::uint8_t Data(const ShifterConfig& config, bool bit) { return bit ? config.data_out : 0; }

}  // namespace

void Shifter::OutHighFirst(const ShifterConfig& config, std::uint8_t value) {
  const Wires::Driving driving(wires_, config.line_register, config.clock | config.data_out);
  for (int bit = kBitsOfAByte - 1; bit >= 0; --bit) {
    ClockBit(config, Data(config, (value >> bit & 1) != 0));
  }
  Rest(config);
}

void Shifter::OutLowFirst(const ShifterConfig& config, std::uint8_t value) {
  const bool group = config.low_bits >= 1 && config.low_bits <= kBitsOfAByte;
  OutLowBits(config, value, group ? config.low_bits : kBitsOfAByte);
}

void Shifter::OutLowBits(const ShifterConfig& config, std::uint8_t value, int count) {
  const Wires::Driving driving(wires_, config.line_register, config.clock | config.data_out);
  for (int bit = 0; bit < count; ++bit) {
    ClockBit(config, Data(config, (value >> bit & 1) != 0));
  }
  Rest(config);
}

void Shifter::OutLast(const ShifterConfig& config, std::uint8_t value, int count) {
  const Wires::Driving driving(wires_, config.line_register, config.clock | config.data_out);
  for (int bit = kBitsOfAByte - 1; bit >= kBitsOfAByte - count; --bit) {
    const std::uint8_t data = Data(config, (value >> bit & 1) != 0);
    const bool last = bit == kBitsOfAByte - count;
    ClockBit(config, last ? data | config.mode_select : data);
  }
  Rest(config);
}

void Shifter::Walk(const ShifterConfig& config, int low_pulses) {
  const Wires::Driving driving(wires_, config.line_register, config.clock | config.data_out);
  ClockBit(config, config.mode_select);
  for (int pulse = 0; pulse < low_pulses; ++pulse) ClockBit(config, 0);
  Rest(config);
}

std::uint8_t Shifter::In(const ShifterConfig& config) {
  const Wires::Driving driving(wires_, config.line_register, config.clock);
  unsigned value = 0;
  for (int bit = 0; bit < kBitsOfAByte; ++bit) {
    ClockBit(config, 0);
    // The input as the clock has risen: the chip puts its next bit out when it falls.
    value = value << 1 | (wires_.Sample(config.line_register, config.data_in) ? 1U : 0U);
  }
  Rest(config);
  return static_cast<std::uint8_t>(value);
}

/// The lines between two writes.
void Shifter::Rest(const ShifterConfig& config) {
  wires_.Write(config.line_register,
               config.clock_rests_high == 1 ? config.fixed | config.clock : config.fixed);
}

/// One clock pulse with the lines `high` high, which leaves the clock high. They change while the
/// clock is low.
void Shifter::ClockBit(const ShifterConfig& config, std::uint8_t high) {
  const auto low = static_cast<std::uint8_t>(config.fixed | high);
  wires_.Write(config.line_register, low, kHalfBit);
  wires_.Write(config.line_register, low | config.clock, kHalfBit);
}

}  // namespace fliglaf::simulator
