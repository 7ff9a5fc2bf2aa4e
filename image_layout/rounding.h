#pragma once

#include <cstdint>

namespace fliglaf {

/// The quotient rounded to the nearest whole number, halves to even; `divisor` is positive.
[[nodiscard]] constexpr std::int64_t DivideToEven(std::int64_t dividend, std::int64_t divisor) {
  const std::int64_t rest = (dividend % divisor + divisor) % divisor;
  const std::int64_t whole = (dividend - rest) / divisor;
  const bool up = 2 * rest > divisor || (2 * rest == divisor && whole % 2 != 0);
  return up ? whole + 1 : whole;
}

}  // namespace fliglaf
