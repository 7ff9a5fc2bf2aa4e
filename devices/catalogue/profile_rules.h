#pragma once

#include "devices/kinds/device_kind.h"

namespace fliglaf {

/// The first rule that the device breaks, of those for every device and those of its kind; null if
/// it keeps all.
[[nodiscard]] const ProfileRule* FirstBrokenRule(const DeviceProfile& device);

}  // namespace fliglaf
