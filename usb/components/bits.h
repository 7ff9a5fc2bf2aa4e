#pragma once

#include <cstdint>

namespace fliglaf {

/// The low `width` bits of `value` in reverse order: bit 0 becomes bit width - 1. Widths 1, 2, 3,
/// 4, 7, 8 and 11; 0 for every other.
[[nodiscard]] std::int32_t reverseBits(std::int32_t value, std::int16_t width);

}  // namespace fliglaf
