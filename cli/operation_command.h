#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/command.h"
#include "cli/operation_options.h"
#include "cli/operation_run.h"
#include "cli/report.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// A command that has the library carry out operations on one device and prints how they ended.
class OperationCommand : public Command {
 public:
  OperationCommand(Help help, bool writes_device, std::string when_missing = "name the device");

  void Describe(OptionSet& options) final;
  ExitStatus Run() final;

 protected:
  /// Adds what only this command takes.
  virtual void AddOptions(OptionSet& /*options*/) {}
  /// Looks at files and options before a programmer is. Returns the operations to carry out, as
  /// the host's codes. Throws UsageError or ImageError.
  [[nodiscard]] virtual std::vector<std::uint8_t> Check(const DeviceProfile& device) = 0;
  /// Carries them out.
  [[nodiscard]] virtual Report Carry(OperationRun& run, const std::vector<std::uint8_t>& codes) {
    return run.Run(codes);
  }
  /// What success means, as the end of a sentence that begins with the device. May add to the
  /// report, and change its status.
  [[nodiscard]] virtual std::string Success(OperationRun& run, Report& report) = 0;

  [[nodiscard]] const OperationOptions& options() const { return options_; }

 private:
  std::string when_missing_;
  OperationOptions options_;
};

/// Throws UsageError for a device that has none.
[[nodiscard]] std::uint8_t EraseCode(const DeviceProfile& device);

}  // namespace fliglaf::cli
