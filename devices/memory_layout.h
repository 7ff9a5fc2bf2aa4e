#pragma once

#include <cstdint>

#include "devices/device_profile.h"

namespace fliglaf {

/// Where the memories of a device lie in its image. The main memory begins at 0; what lies in none
/// of them is configuration or is not used.
struct MemoryLayout {
  std::int32_t main_bytes = 0;
  std::int32_t data_start = 0;  ///< of the data EEPROM, or of a second area of flash
  std::int32_t data_bytes = 0;  ///< 0: the device has none
};

[[nodiscard]] MemoryLayout LayoutOf(const DeviceProfile& device);

}  // namespace fliglaf
