#include "usb/components/bits.h"

#include <algorithm>
#include <array>

namespace fliglaf {
namespace {

constexpr int kBitsOfAByte = 8;

/// Each byte with bit 7 in the place of bit 0.
constexpr auto kReversedBytes = [] {
  std::array<std::uint8_t, 256> bytes{};
  for (unsigned byte = 0; byte < bytes.size(); ++byte) {
    for (int bit = 0; bit < kBitsOfAByte; ++bit) {
      if ((byte >> bit & 1) != 0) bytes[byte] |= static_cast<std::uint8_t>(0x80 >> bit);
    }
  }
  return bytes;
}();

}  // namespace

std::int32_t reverseBits(std::int32_t value, std::int16_t width) {
  constexpr std::array<std::int16_t, 7> kWidths{1, 2, 3, 4, 7, 8, 11};
  if (std::ranges::find(kWidths, width) == kWidths.end()) return 0;
  const int low = kReversedBytes[value & 0xFF];
  const int high = kReversedBytes[value >> kBitsOfAByte & 0xFF];
  return (low << kBitsOfAByte | high) >> (2 * kBitsOfAByte - width);
}

}  // namespace fliglaf
