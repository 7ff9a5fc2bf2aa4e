#pragma once

#include <filesystem>
#include <string>

#include "simulator/bench/simulated_bench.h"

namespace fliglaf::cli {

/// Whether a command makes a chip file that does not exist.
enum class MissingChipFile { kCreate, kRefuse };

/// Uses a chip file, unless its name is empty. A command that changes the device makes a missing
/// one and says so on standard error; the others refuse it with a UsageError.
void UseChipFile(simulator::SimulatedBench& bench, const std::filesystem::path& file,
                 MissingChipFile missing, const std::string& device);

}  // namespace fliglaf::cli
