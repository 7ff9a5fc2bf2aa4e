#include "cli/operations.h"

#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli/image_input.h"
#include "cli/image_output.h"
#include "cli/operation_run.h"
#include "cli/report.h"
#include "cli/usage_error.h"
#include "platform/terminal.h"
#include "usb/operation.h"

namespace fliglaf::cli {
namespace {

/// The request that carries out nothing: only the signature check in front of it takes place.
constexpr std::uint8_t kNothing = 1;

std::uint8_t EraseCode(const DeviceProfile& device) {
  if (!device.operations.erase) throw UsageError(device.name + " has no erase operation");
  return *device.operations.erase;
}

std::uint8_t LockCode(const DeviceProfile& device, int level) {
  const auto& codes = device.operations.lock;
  if (codes.empty()) throw UsageError(device.name + " has no lock operation");
  if (level < 1 || level > static_cast<int>(codes.size())) {
    throw UsageError(
        fmt::format("lock level {}: {} has levels 1 to {}", level, device.name, codes.size()));
  }
  return codes[static_cast<std::size_t>(level) - 1];
}

/// The host's operation codes for a command.
std::vector<std::uint8_t> Codes(const Options& options, const DeviceProfile& device) {
  if (device.config_words > 0) {
    throw UsageError(device.name + " has configuration words only; \"fliglaf config\" writes them");
  }
  if (options.parallel && options.command == Command::kLock) {
    throw UsageError("lock: the parallel engine has no lock operation");
  }
  switch (options.command) {
    case Command::kProgram:
      if (options.erase) return {EraseCode(device), operation::kProgram};
      return {operation::kProgram};
    case Command::kRead:
      return {operation::kRead};
    case Command::kVerify:
      return {operation::kVerify};
    case Command::kBlank:
      return {operation::kBlankCheck};
    case Command::kCompare:
      return {operation::kCompare};
    case Command::kErase:
      return {EraseCode(device)};
    case Command::kLock:
      return {LockCode(device, options.lock_level)};
    case Command::kSignature:
      if (!device.signature) throw UsageError(device.name + " has no signature to check");
      if (!options.check_signature)
        throw UsageError("signature: --no-signature leaves nothing to do");
      return {kNothing};
    default:
      throw UsageError(options.command_name + " is no operation on a device");
  }
}

bool TakesImage(Command command) {
  return command == Command::kProgram || command == Command::kVerify ||
         command == Command::kCompare;
}

/// What success means, in one sentence.
std::string SuccessMessage(const Options& options, const DeviceProfile& device, std::size_t bytes,
                           const std::string& files) {
  switch (options.command) {
    case Command::kProgram:
      return fmt::format("{}: programmed with {} bytes and verified.", device.name, bytes);
    case Command::kRead:
      return fmt::format("{}: {} bytes read into {}.", device.name, bytes, files);
    case Command::kVerify:
      return fmt::format("{}: verified.", device.name);
    case Command::kBlank:
      return fmt::format("{}: blank.", device.name);
    case Command::kCompare:
      return fmt::format("{}: no difference.", device.name);
    case Command::kErase:
      return fmt::format("{}: erased and blank.", device.name);
    case Command::kSignature:
      return fmt::format("{}: the signature is right.", device.name);
    default:
      return fmt::format("{}: locked at level {}.", device.name, options.lock_level);
  }
}

}  // namespace

ExitStatus RunOperationCommand(const Options& options, const DeviceProfile& device) {
  const std::vector<std::uint8_t> codes = Codes(options, device);
  std::optional<ImageOutput> output;
  if (options.command == Command::kRead) output.emplace(options, device);

  OperationRun run(options, device);
  std::size_t bytes = 0;
  if (TakesImage(options.command)) bytes = LoadImage(options, device, run.session().image());

  platform::CatchStopSignals();
  Report report = run.Run(codes);
  if (options.command == Command::kSignature && report.signature_ignored) {
    report.status = ExitStatus::kDiffers;
    report.message = device.name + ": another signature was read";
  }
  if (report.status == ExitStatus::kSuccess) {
    if (output) bytes = output->Write(run.session().image());
    report.message = SuccessMessage(options, device, bytes, output ? output->names() : "");
  }
  report.bytes = bytes;
  PrintReport(options, report);
  run.Keep();
  return report.status;
}

}  // namespace fliglaf::cli
