#pragma once

#include "cli/exit_status.h"
#include "cli/options.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// Offers the simulated chip to another tool until that is done or has gone, or a signal comes, and
/// keeps the chip then. Throws UsageError or ImageError for what cannot be had.
using ChipCommand = ExitStatus (*)(const Options& options, const DeviceProfile& device);

/// The command; null where the program does not have it.
[[nodiscard]] ChipCommand FindChipCommand();

}  // namespace fliglaf::cli
