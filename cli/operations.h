#pragma once

#include "cli/exit_status.h"
#include "cli/options.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// Carries out an operation on a device and prints how it ended. Throws UsageError, ImageError or
/// platform::Stopped before anything is done to the chip.
ExitStatus RunOperationCommand(const Options& options, const DeviceProfile& device);

}  // namespace fliglaf::cli
