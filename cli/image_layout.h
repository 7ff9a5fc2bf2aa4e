#pragma once

#include <cstddef>

#include "devices/device_profile.h"

namespace fliglaf::cli {

/// A part of the device image, in bytes.
struct ImageArea {
  std::size_t first = 0;
  std::size_t bytes = 0;
};

/// Where the memories of a device lie in its image, as the library lays it out.
struct ImageLayout {
  ImageArea main;  ///< program memory
  ImageArea data;  ///< data memory; no bytes where the device has none
};

[[nodiscard]] ImageLayout LayoutOf(const DeviceProfile& device);

}  // namespace fliglaf::cli
