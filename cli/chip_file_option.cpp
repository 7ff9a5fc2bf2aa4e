#include "cli/chip_file_option.h"

#include <fmt/format.h>

#include "cli/report.h"
#include "cli/usage_error.h"

namespace fliglaf::cli {

void UseChipFile(simulator::SimulatedBench& bench, const std::filesystem::path& file,
                 MissingChipFile missing, const std::string& device) {
  if (file.empty()) return;
  if (missing == MissingChipFile::kCreate) {
    if (bench.CreateChipFile(file)) {
      PrintProblem(fmt::format("{}: created, with a new {}", file.string(), device));
    }
  } else if (!std::filesystem::exists(file)) {
    throw UsageError(
        fmt::format("{}: no such chip file; commands that change the device make one, "
                    "such as \"fliglaf program\"",
                    file.string()));
  }
  bench.UseChipFile(file);
}

}  // namespace fliglaf::cli
