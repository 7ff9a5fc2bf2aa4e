#pragma once

#include "cli/exit_status.h"
#include "cli/options.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// Carries out an operation on a device and prints how it ended. Throws UsageError or ImageError
/// before anything is done to the chip, and ImageError when what came of it cannot be written.
ExitStatus RunOperationCommand(const Options& options, const DeviceProfile& device);

}  // namespace fliglaf::cli
