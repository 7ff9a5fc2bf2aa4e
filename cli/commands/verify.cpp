// fliglaf verify, fliglaf compare: hold a device against files, up to the first difference or to
// the last.
#include <array>
#include <optional>

#include <fmt/format.h>

#include "cli/commands/table.h"
#include "cli/image_input.h"
#include "cli/operation_command.h"
#include "usb/request/operation.h"

namespace fliglaf::cli {
namespace {

struct Kind {
  std::uint8_t code;
  const char* done;     ///< "verified"
  const char* success;  ///< with the number of bytes
};

class VerifyCommand : public OperationCommand {
 public:
  VerifyCommand(Help help, Kind kind)
      : OperationCommand(std::move(help), false, "name the device, then the file"), kind_(kind) {}

 protected:
  void AddOptions(OptionSet& options) override { AddInputFiles(options, files_); }

  std::vector<std::uint8_t> Check(const DeviceProfile& device) override {
    input_.emplace(name(), files_, device);
    return {kind_.code};
  }

  /// Only what the files hold is checked: the rest of the image is what the device holds, so that
  /// the library's own passes find no difference there.
  Report Carry(OperationRun& run, const std::vector<std::uint8_t>& codes) override {
    if (!input_->is_whole()) {
      Report read = run.Run(std::array{std::uint8_t{operation::kRead}}, Recorded::kIfNoOther);
      if (read.status != ExitStatus::kSuccess) return read;
    }
    input_->CopyTo(run.session().image());
    return run.Run(codes);
  }

  std::string Success(OperationRun& /*run*/, Report& report) override {
    report.bytes = input_->bytes();
    return fmt::format(fmt::runtime(kind_.success), ByteCount(report.bytes)) +
           input_->Others(kind_.done);
  }

 private:
  Kind kind_;
  ImageFiles files_;
  std::optional<ImageInput> input_;
};

}  // namespace

std::unique_ptr<Command> MakeVerify() {
  return std::make_unique<VerifyCommand>(
      Command::Help{.name = "verify",
                    .summary = "Check that a device holds what a file gives, up to the first "
                               "difference",
                    .example = "verify isp51-8k firmware.hex --chip bench.chip"},
      Kind{.code = operation::kVerify, .done = "verified", .success = "{} verified"});
}

std::unique_ptr<Command> MakeCompare() {
  return std::make_unique<VerifyCommand>(
      Command::Help{.name = "compare",
                    .summary = "List every byte in which a device and a file differ",
                    .example = "compare isp51-8k firmware.hex --chip bench.chip"},
      Kind{.code = operation::kCompare, .done = "compared", .success = "no difference in {}"});
}

}  // namespace fliglaf::cli
