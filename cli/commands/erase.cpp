// fliglaf erase: erases a device.
#include "cli/commands/table.h"
#include "cli/operation_command.h"

namespace fliglaf::cli {
namespace {

class EraseCommand : public OperationCommand {
 public:
  EraseCommand()
      : OperationCommand({.name = "erase",
                          .summary = "Erase a device and check that it is blank",
                          .example = "erase isp51-8k --chip bench.chip"},
                         true) {}

 protected:
  std::vector<std::uint8_t> Check(const DeviceProfile& device) override {
    return {EraseCode(device)};
  }
  std::string Success(OperationRun& /*run*/, Report& /*report*/) override {
    return "erased and blank.";
  }
};

}  // namespace

std::unique_ptr<Command> MakeErase() { return std::make_unique<EraseCommand>(); }

}  // namespace fliglaf::cli
