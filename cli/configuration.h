#pragma once

#include "cli/exit_status.h"
#include "cli/options.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// Shows the configuration bytes of a device, or writes those that the options name and reads them
/// back. A write that would shut the programming interface asks first at a terminal and needs --yes
/// elsewhere. Throws UsageError or ImageError before anything is written to the chip.
ExitStatus RunConfigCommand(const Options& options, const DeviceProfile& device);

}  // namespace fliglaf::cli
