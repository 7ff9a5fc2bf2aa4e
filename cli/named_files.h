#pragma once

#include <span>

#include "cli/options.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// Looks at the files that the options name before anything is done with them. Throws UsageError
/// when one file stands in two roles, ImageError when one that is written at the end of the run
/// could not be.
void CheckNamedFiles(const Options& options);

}  // namespace fliglaf::cli
