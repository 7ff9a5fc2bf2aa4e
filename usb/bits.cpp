#include "usb/bits.h"

#include <algorithm>
#include <array>

namespace fliglaf {

std::int32_t reverseBits(std::int32_t value, std::int16_t width) {
  constexpr std::array<std::int16_t, 7> kWidths{1, 2, 3, 4, 7, 8, 11};
  if (std::ranges::find(kWidths, width) == kWidths.end()) return 0;
  std::int32_t reversed = 0;
  for (int i = 0; i < width; ++i) reversed |= (value >> i & 1) << (width - 1 - i);
  return reversed;
}

}  // namespace fliglaf
