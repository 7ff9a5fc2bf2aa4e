// How the programmer reaches parts on a clock and a data line: which bits of which port the lines
// are, by the device's option. The latches bring the socket's other pins to rest as well.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>

#include "usb/request/latches.h"

namespace fliglaf {

/// Twelve latches at most.
class LatchList {
 public:
  consteval LatchList(std::initializer_list<Latch> latches) : count_(latches.size()) {
    std::ranges::copy(latches, latches_.begin());
  }
  [[nodiscard]] std::span<const Latch> latches() const { return std::span(latches_).first(count_); }

 private:
  std::array<Latch, 12> latches_{};
  std::size_t count_;
};

struct TwoWireAssignment {
  std::uint8_t option;         ///< quorinwoption(0)
  std::uint8_t clock;          ///< bit of the port
  std::uint8_t data;           ///< bit of the port
  std::uint8_t fixed;          ///< bits of the port that stay high
  std::uint8_t line_register;  ///< the port
  /// Bits that the reset pulse holds high, of parts with a programming voltage on a pin. None:
  /// TwoWireLines::extraBits keeps what it has, and the pulse leaves it out.
  std::optional<std::uint8_t> extra;
  LatchList latches;  ///< in the order in which they are written
};

/// By the option of the device; null for an option without an assignment.
[[nodiscard]] const TwoWireAssignment* Fam12Assignment(std::uint8_t option);
[[nodiscard]] const TwoWireAssignment* Fam16Assignment(std::uint8_t option);

}  // namespace fliglaf
