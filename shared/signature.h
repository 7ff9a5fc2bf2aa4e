#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace fliglaf {

/// The identification of a device: manufacturer, device and a third byte.
using Signature = std::array<std::uint8_t, 3>;

namespace signature_byte {
inline constexpr std::size_t kMaker = 0;
inline constexpr std::size_t kDevice = 1;
}  // namespace signature_byte

}  // namespace fliglaf
