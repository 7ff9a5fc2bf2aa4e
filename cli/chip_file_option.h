#pragma once

#include "cli/options.h"
#include "simulator/bench/simulated_bench.h"

namespace fliglaf::cli {

/// Uses the chip file that the options name, if any. A command that changes the device makes a
/// missing one and says so on standard error; the others refuse it with a UsageError.
void UseChipFile(simulator::SimulatedBench& bench, const Options& options);

}  // namespace fliglaf::cli
