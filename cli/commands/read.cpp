// fliglaf read: reads a device into files.
#include <optional>

#include <fmt/format.h>

#include "cli/commands/table.h"
#include "cli/image_output.h"
#include "cli/operation_command.h"
#include "usb/request/operation.h"

namespace fliglaf::cli {
namespace {

/// What contents may mean that say nothing.
std::string NoteOn(Contents contents, std::uint8_t first, const DeviceProfile& device) {
  switch (contents) {
    case Contents::kUniform:
      return fmt::format(" Every byte is {:02X}: {}", first,
                         first == device.erased ? "the device is blank, or locked."
                                                : "is the device locked, or the socket empty?");
    case Contents::kAddresses:
      return " Every word is its own address: the device is locked.";
    default:
      return {};
  }
}

class ReadCommand : public OperationCommand {
 public:
  ReadCommand()
      : OperationCommand({.name = "read",
                          .summary = "Read a device into a file",
                          .example = "read isp51-8k --output contents.hex --chip bench.chip"},
                         false, "name the device, and the file to write with --output") {}

 protected:
  void AddOptions(OptionSet& options) override {
    files_.AddTo(options, "-o,--output",
                 "File for the main memory; its ending selects the format (.hex, .s19, .bin, ...)");
  }

  std::vector<std::uint8_t> Check(const DeviceProfile& device) override {
    output_.emplace(files_, device);
    return {operation::kRead};
  }

  std::string Success(OperationRun& run, Report& report) override {
    const std::span<const std::uint8_t> image = run.session().image();
    const std::string files = output_->Write(image, report);
    if (files.empty()) return "read, but no file was written.";
    const auto [contents, first] = output_->Judge(image);
    return fmt::format("{} read into {}.{}", ByteCount(report.bytes), files,
                       NoteOn(contents, first, run.device()));
  }

 private:
  ImageFiles files_;
  std::optional<ImageOutput> output_;
};

}  // namespace

std::unique_ptr<Command> MakeRead() { return std::make_unique<ReadCommand>(); }

}  // namespace fliglaf::cli
