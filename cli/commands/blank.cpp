// fliglaf blank: checks that a device is erased.
#include "cli/commands/table.h"
#include "cli/operation_command.h"
#include "usb/request/operation.h"

namespace fliglaf::cli {
namespace {

class BlankCommand : public OperationCommand {
 public:
  BlankCommand()
      : OperationCommand({.name = "blank",
                          .summary = "Check that a device is erased",
                          .example = "blank isp51-8k --chip bench.chip"},
                         false) {}

 protected:
  std::vector<std::uint8_t> Check(const DeviceProfile& /*device*/) override {
    return {operation::kBlankCheck};
  }
  std::string Success(OperationRun& /*run*/, Report& /*report*/) override { return "blank."; }
};

}  // namespace

std::unique_ptr<Command> MakeBlank() { return std::make_unique<BlankCommand>(); }

}  // namespace fliglaf::cli
