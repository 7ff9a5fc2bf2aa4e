// The lines between the programmer's ports and the socket.
#pragma once

#include <array>
#include <cstdint>

namespace fliglaf::simulator {

/// A set of lines, or a level for each: bit 8p + b is bit b of port p, 0 to 5.
using Lines = std::uint64_t;

inline constexpr int kPortRegisters = 12;

/// The lines that the ports have.
inline constexpr Lines kPortLines = (Lines{1} << kPortRegisters / 2 * 8) - 1;
/// Above them what only a watch sees: whether the supply, and the programming voltage, is there.
inline constexpr Lines kVcc = Lines{1} << 62;
inline constexpr Lines kVpp = Lines{1} << 63;

/// The lines of `mask` on the port that register `number` drives or masks; none for a number that
/// is not a port register.
[[nodiscard]] constexpr Lines LinesOf(int number, std::uint8_t mask) {
  return number >= 0 && number < kPortRegisters ? Lines{mask} << (number / 2 * 8) : 0;
}

/// The programmer's port registers: an even one holds the outputs of a port, the odd one above it
/// its input mask (1 = the line is an input, the programmer does not drive it).
class Ports {
 public:
  /// Sets all outputs alike, with no line an input.
  void Preset(bool high) {
    outputs_ = high ? ~Lines{0} : Lines{0};
    inputs_ = 0;
  }
  /// A write to a number that is not a port register, 0 to 11, has no effect.
  void Write(int number, std::uint8_t value) {
    const Lines all = LinesOf(number, 0xFF);
    const Lines written = LinesOf(number, value);
    if (number % 2 == 0) {
      outputs_ = (outputs_ & ~all) | written;
    } else {
      inputs_ = (inputs_ & ~all) | written;
    }
  }
  [[nodiscard]] Lines outputs() const { return outputs_; }
  [[nodiscard]] Lines inputs() const { return inputs_; }

 private:
  Lines outputs_ = 0;
  Lines inputs_ = 0;
};

}  // namespace fliglaf::simulator
