#include "cli/operation_command.h"

#include <utility>

#include <fmt/format.h>

namespace fliglaf::cli {

OperationCommand::OperationCommand(Help help, bool writes_device, std::string when_missing)
    : Command(std::move(help)), when_missing_(std::move(when_missing)) {
  options_.command = name();
  options_.writes_device = writes_device;
}

void OperationCommand::Describe(OptionSet& options) {
  options_.device.AddDevice(options, fmt::format("{}: {}", name(), when_missing_));
  AddOptions(options);
  options_.AddTo(options);
}

ExitStatus OperationCommand::Run() {
  const DeviceProfile& device = options_.Begin();
  if (device.config_words > 0) {
    throw UsageError(device.name + " has configuration words only; \"fliglaf config\" writes them");
  }
  const std::vector<std::uint8_t> codes = Check(device);
  OperationRun run(options_, device);
  return run.Complete([&] {
    Report report = Carry(run, codes);
    if (report.status == ExitStatus::kSuccess) {
      report.message = fmt::format("{}: {}", device.name, Success(run, report));
    }
    return report;
  });
}

std::uint8_t EraseCode(const DeviceProfile& device) {
  if (!device.operations.erase) throw UsageError(device.name + " has no erase operation");
  return *device.operations.erase;
}

}  // namespace fliglaf::cli
