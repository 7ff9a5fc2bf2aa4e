// What several kinds of devices share.
#pragma once

#include <cstdint>

#include "devices/kinds/device_kind.h"
#include "simulator/silicon.h"

namespace fliglaf {

/// The layout of the device's family.
[[nodiscard]] ImageLayout FamilyLayout(const DeviceProfile& device);

/// What a data sheet says of the part, and nothing of how a host drives it.
[[nodiscard]] simulator::Silicon SiliconOf(const DeviceProfile& device);
[[nodiscard]] simulator::SupplyPins SupplyOf(const DeviceProfile& device);

/// Bytes of a memory that a family fetches in one transfer; more would never be read.
inline constexpr std::int32_t kOneTransfer = 16'384;

/// Of families whose addresses count bytes.
[[nodiscard]] bool ImageIsBytes(const DeviceProfile& device);
/// Of families whose addresses count words of two bytes.
[[nodiscard]] bool ImageIsWords(const DeviceProfile& device);
[[nodiscard]] bool FlashIsWholePages(const DeviceProfile& device);
/// A page of 2^n addresses, from `least` to `most`.
[[nodiscard]] bool PageIsPowerOfTwo(const DeviceProfile& device, int least, int most);

}  // namespace fliglaf
