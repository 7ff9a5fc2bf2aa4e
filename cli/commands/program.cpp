// fliglaf program: erases, programs and verifies a device.
#include <optional>

#include <fmt/format.h>

#include "cli/commands/table.h"
#include "cli/image_input.h"
#include "cli/operation_command.h"
#include "cli/usage_error.h"
#include "devices/kinds/device_kind.h"
#include "usb/request/operation.h"

namespace fliglaf::cli {
namespace {

class ProgramCommand : public OperationCommand {
 public:
  ProgramCommand()
      : OperationCommand({.name = "program",
                          .summary = "Erase, program and verify a device",
                          .example = "program isp51-8k firmware.hex --chip bench.chip"},
                         true, "name the device, then the file") {}

 protected:
  void AddOptions(OptionSet& options) override {
    AddInputFiles(options, files_);
    options.Flag("--no-erase", "Skip the erase and its blank check", erase_, false);
    options.Flag("--erase-all", "With --eeprom alone: clear the main memory too", erase_all_);
    options.Number("--margin", "N", "Verify at the supply plus and minus N times 5 %", margin_, 0,
                   kMostMargin);
  }

  std::vector<std::uint8_t> Check(const DeviceProfile& device) override {
    std::vector<std::uint8_t> codes{operation::kProgram};
    if (erase_) codes.insert(codes.begin(), EraseCode(device));
    input_.emplace(name(), files_, device);
    // An erase clears all memories, and a program pass writes the erased value to what no file gives.
    if (!erase_all_ && !input_->has_main()) {
      throw UsageError(
          "program: no file gives any of the main memory, which would be cleared; name its FILE "
          "too, or add --erase-all");
    }
    return codes;
  }

  Report Carry(OperationRun& run, const std::vector<std::uint8_t>& codes) override {
    run.session().SetMargin(margin_);
    input_->CopyTo(run.session().image());
    return run.Run(codes);
  }

  std::string Success(OperationRun& run, Report& report) override {
    report.bytes = input_->bytes();
    const bool clears_data = LayoutOf(run.device()).data_bytes > 0 && !input_->has_data();
    return fmt::format("programmed with {} and verified{}{}", ByteCount(report.bytes),
                       clears_data ? "; the data memory is cleared" : "",
                       input_->Others("written"));
  }

 private:
  /// With 20, the lowered supply would be 0 V.
  static constexpr int kMostMargin = 19;

  ImageFiles files_;
  bool erase_ = true;
  bool erase_all_ = false;
  int margin_ = 0;
  std::optional<ImageInput> input_;
};

}  // namespace

std::unique_ptr<Command> MakeProgram() { return std::make_unique<ProgramCommand>(); }

}  // namespace fliglaf::cli
