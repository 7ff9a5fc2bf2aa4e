#pragma once

#include "devices/device_profile.h"
#include "image_layout/image_layout.h"

namespace fliglaf {

/// Where the memories and the configuration of a device lie in its image.
[[nodiscard]] ImageLayout LayoutOf(const DeviceProfile& device);

}  // namespace fliglaf
