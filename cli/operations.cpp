#include "cli/operations.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli/image_input.h"
#include "cli/image_output.h"
#include "cli/operation_run.h"
#include "cli/report.h"
#include "cli/usage_error.h"
#include "devices/memory_layout.h"
#include "usb/request/operation.h"

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

/// An erase clears all memories, and a program pass writes the erased value where no file says
/// otherwise. Throws UsageError when the main memory would be lost so, or nothing is to be done.
void CheckInput(const Options& options, const ImageInput& input) {
  if (input.bytes() == 0) {
    throw UsageError(
        fmt::format("{}: the file gives nothing of the device's memories{}", options.command_name,
                    input.others().empty() ? "" : "; \"fliglaf config\" writes configuration"));
  }
  if (options.command != Command::kProgram || options.erase_all || input.has_main()) return;
  throw UsageError(
      "program: no file gives anything of the main memory, which would be cleared; name its FILE "
      "as "
      "well, or add --erase-all");
}

/// What the files give and the operation does not work on, as the end of a sentence.
std::string LeftOut(const ImageInput& input, std::string_view done) {
  const std::string others = input.others();
  if (others.empty()) return ".";
  return fmt::format("; {} of the image, which is configuration or unused, was not {}.", others,
                     done);
}

/// What a read of nothing but one value may mean.
std::string UniformNote(std::optional<std::uint8_t> value, const DeviceProfile& device) {
  if (!value) return {};
  return fmt::format(" Every byte is {:02X}: {}", *value,
                     *value == device.erased ? "blank, or the device is locked."
                                             : "is the device locked, or the socket empty?");
}

/// A command on one device from its checks to its report.
class OperationCommand {
 public:
  OperationCommand(const Options& options, const DeviceProfile& device)
      : options_(options), device_(device), codes_(Codes(options, device)) {
    if (TakesImage(options.command)) {
      input_.emplace(options, device);
      CheckInput(options, *input_);
    }
    if (options.command == Command::kRead) output_.emplace(options, device);
    run_.emplace(options, device);
  }

  ExitStatus Run() {
    Report report = Carried();
    if (report.status == ExitStatus::kSuccess) Complete(report);
    run_->Keep(report);
    return PrintReport(options_, report);
  }

 private:
  /// Only what the files hold is verified and compared: the rest of the image is what the device
  /// holds, so that the library's own passes find no difference there.
  Report Carried() {
    const auto image = run_->session().image();
    if (input_ && options_.command != Command::kProgram && !input_->is_whole()) {
      const Report read =
          run_->Run(std::array{std::uint8_t{operation::kRead}}, Recorded::kIfNoOther);
      if (read.status != ExitStatus::kSuccess) return read;
    }
    if (input_) input_->CopyTo(image);
    return run_->Run(codes_);
  }

  void Complete(Report& report) {
    if (input_) report.bytes = input_->bytes();
    if (options_.command == Command::kSignature && report.signature_ignored) {
      report.status = ExitStatus::kDiffers;
      report.message = device_.name + ": another signature was read";
      return;
    }
    report.message = fmt::format("{}: {}", device_.name, Success(report));
  }

  /// What success means, in one sentence.
  std::string Success(Report& report) {
    switch (options_.command) {
      case Command::kProgram:
        return fmt::format("programmed with {} bytes and verified{}{}", report.bytes,
                           ClearsData() ? "; the data memory is cleared" : "",
                           LeftOut(*input_, "written"));
      case Command::kRead:
        return ReadInto(report);
      case Command::kVerify:
        return fmt::format("{} bytes verified{}", report.bytes, LeftOut(*input_, "verified"));
      case Command::kBlank:
        return "blank.";
      case Command::kCompare:
        return fmt::format("no difference in {} bytes{}", report.bytes,
                           LeftOut(*input_, "compared"));
      case Command::kErase:
        return "erased and blank.";
      case Command::kSignature:
        return "the signature is right.";
      default:
        return fmt::format("locked at level {}.", options_.lock_level);
    }
  }

  [[nodiscard]] bool ClearsData() const {
    return LayoutOf(device_).data_bytes > 0 && !input_->has_data();
  }

  std::string ReadInto(Report& report) {
    const std::span<const std::uint8_t> image = run_->session().image();
    const std::string files = output_->Write(image, report);
    if (files.empty()) return "read, but no file was written.";
    return fmt::format("{} bytes read into {}.{}", report.bytes, files,
                       UniformNote(output_->OneValue(image), device_));
  }

  const Options& options_;
  const DeviceProfile& device_;
  std::vector<std::uint8_t> codes_;
  std::optional<ImageInput> input_;
  std::optional<ImageOutput> output_;
  std::optional<OperationRun> run_;
};

}  // namespace

ExitStatus RunOperationCommand(const Options& options, const DeviceProfile& device) {
  return OperationCommand(options, device).Run();
}

}  // namespace fliglaf::cli
