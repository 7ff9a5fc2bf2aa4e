#pragma once

#include "cli/option_set.h"

namespace fliglaf::cli {

/// Looks at the files that the options name before anything is done with them. Throws UsageError
/// when one file has two roles.
void CheckNamedFiles(const OptionSet& options);

}  // namespace fliglaf::cli
