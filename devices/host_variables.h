#pragma once

#include "devices/device_profile.h"
#include "shared/shared_variables.h"

namespace fliglaf {

/// Fills in what a host tells the library of a device. `parallel`: for a request to the parallel
/// engine, which has the end of the range behind its last address.
void DescribeDevice(const DeviceProfile& device, bool parallel, SharedVariables& vars);

}  // namespace fliglaf
