// fliglaf signature: checks that the expected device is in the socket.
#include "cli/commands/table.h"
#include "cli/operation_command.h"
#include "cli/usage_error.h"

namespace fliglaf::cli {
namespace {

/// A request that carries out nothing after the signature check.
constexpr std::uint8_t kNothing = 1;

class SignatureCommand : public OperationCommand {
 public:
  SignatureCommand()
      : OperationCommand({.name = "signature",
                          .summary = "Check that the expected device is in the socket",
                          .example = "signature isp51-8k"},
                         false) {}

 protected:
  std::vector<std::uint8_t> Check(const DeviceProfile& device) override {
    if (!device.signature) throw UsageError(device.name + " has no signature to check");
    if (!options().check_signature) {
      throw UsageError("signature: --no-signature leaves nothing to do");
    }
    return {kNothing};
  }
  std::string Success(OperationRun& /*run*/, Report& report) override {
    if (!report.signature_ignored) return "the signature matches.";
    report.status = ExitStatus::kDiffers;
    return "another signature was read";
  }
};

}  // namespace

std::unique_ptr<Command> MakeSignature() { return std::make_unique<SignatureCommand>(); }

}  // namespace fliglaf::cli
