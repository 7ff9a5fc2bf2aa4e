#pragma once

#include "cli/exit_status.h"
#include "cli/options.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// Shows the fuse and lock bits of a device by their names, or changes those that the options name:
/// in an image file where one is named, else in the device itself. Throws UsageError or ImageError
/// before anything is written.
ExitStatus RunFusesCommand(const Options& options, const DeviceProfile& device);

}  // namespace fliglaf::cli
