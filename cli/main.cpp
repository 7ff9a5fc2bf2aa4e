// The command-line host.
#include <exception>
#include <iostream>

#include <fmt/format.h>

#include "cli/chip_command.h"
#include "cli/configuration.h"
#include "cli/device_list.h"
#include "cli/exit_status.h"
#include "cli/fuses.h"
#include "cli/named_files.h"
#include "cli/operations.h"
#include "cli/options.h"
#include "cli/report.h"
#include "cli/usage_error.h"
#include "devices/device_catalogue.h"
#include "devices/profile_error.h"
#include "images/whole_file.h"
#include "platform/terminal.h"
#include "replay/replay.h"
#include "simulator/bench/bench_error.h"

namespace fliglaf::cli {
namespace {

DeviceCatalogue LoadCatalogue(const Options& options) {
  DeviceCatalogue catalogue = DeviceCatalogue::BuiltIn();
  for (const auto& folder : options.device_folders) catalogue.AddFolder(folder);
  return catalogue;
}

const DeviceProfile& FindDevice(const DeviceCatalogue& catalogue, const std::string& name) {
  if (const DeviceProfile* device = catalogue.Find(name)) return *device;
  const auto nearest = catalogue.NearestNames(name);
  throw UsageError(fmt::format("{}: unknown device; {}", name,
                               nearest.empty()
                                   ? "\"fliglaf devices\" lists those that are known"
                                   : fmt::format("did you mean {}?", fmt::join(nearest, ", "))));
}

/// The exit statuses of a replay are those of the program: 0 agrees, 1 differs, 2 unreadable.
ExitStatus ReplayRecords(const Options& options) {
  return static_cast<ExitStatus>(
      record::Replay(options.records, {.explain = options.explain}, std::cout, std::cerr));
}

ExitStatus Run(const Options& options) {
  if (options.command == Command::kReplay) return ReplayRecords(options);
  if (options.command != Command::kDevices) platform::CatchStopSignals();
  CheckNamedFiles(options);
  const DeviceCatalogue catalogue = LoadCatalogue(options);
  if (options.command == Command::kDevices) {
    PrintDevices(catalogue, options.json);
    return ExitStatus::kSuccess;
  }
  const DeviceProfile& device = FindDevice(catalogue, options.device);
  if (options.command == Command::kChip) return FindChipCommand()(options, device);
  if (options.command == Command::kConfig) return RunConfigCommand(options, device);
  if (options.command == Command::kFuses) return RunFusesCommand(options, device);
  return RunOperationCommand(options, device);
}

ExitStatus Main(int argc, const char* const* argv) {
  const auto end = [](ExitStatus status, std::string_view problem) {
    PrintProblem(problem);
    return status;
  };
  try {
    const auto options = ParseOptions(argc, argv);
    const ExitStatus status = options ? Run(*options) : ExitStatus::kSuccess;
    if (std::cout.flush()) return status;
    return end(status == ExitStatus::kSuccess ? ExitStatus::kUnwritten : status,
               "standard output: cannot be written");
  } catch (const platform::Stopped& stopped) {
    return end(ExitStatus::kStopped, stopped.what());
  } catch (const UsageError& error) {
    return end(ExitStatus::kUsage, error.what());
  } catch (const simulator::BenchError& error) {
    return end(ExitStatus::kUsage, error.what());
  } catch (const ImageError& error) {
    return end(ExitStatus::kUsage, error.what());
  } catch (const ProfileError& error) {
    return end(ExitStatus::kUsage, error.what());
  } catch (const std::exception& error) {
    return end(ExitStatus::kProgrammer, fmt::format("internal error: {}", error.what()));
  }
}

}  // namespace
}  // namespace fliglaf::cli

int main(int argc, char** argv) {
  fliglaf::platform::OpenStandardStreams();
  const fliglaf::platform::Utf8Console console;
  const fliglaf::platform::Utf8Arguments arguments(argc, argv);
  return static_cast<int>(fliglaf::cli::Main(arguments.count(), arguments.values()));
}
