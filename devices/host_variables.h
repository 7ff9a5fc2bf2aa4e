#pragma once

#include "devices/device_profile.h"
#include "shared/shared_variables.h"

namespace fliglaf {

/// Fills in the variables that describe a device to the library. `parallel`: for a request to the parallel
/// engine, which has the end of the range behind its last address.
void DescribeDevice(const DeviceProfile& device, bool parallel, SharedVariables& vars);

}  // namespace fliglaf
