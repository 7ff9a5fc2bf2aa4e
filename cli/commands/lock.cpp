// fliglaf lock: locks a device.
#include <charconv>

#include <fmt/format.h>

#include "cli/commands/table.h"
#include "cli/operation_command.h"
#include "cli/usage_error.h"
#include "devices/kinds/device_kind.h"

namespace fliglaf::cli {
namespace {

/// How "fliglaf config" locks a device that has no operation for it; empty when it cannot either.
std::string OtherWay(const DeviceProfile& device) {
  if (!device.operations.config) return {};
  std::string bytes;
  for (const ConfigByte& byte : ConfigBytesOf(device)) {
    if (byte.name.ends_with("lock")) bytes += fmt::format(" {}=XX", byte.name);
  }
  return bytes.empty()
             ? bytes
             : fmt::format("; write its lock byte: fliglaf config {}{}", device.name, bytes);
}

class LockCommand : public OperationCommand {
 public:
  LockCommand()
      : OperationCommand({.name = "lock",
                          .summary = "Lock a device",
                          .example = "lock isp51-8k 2 --chip bench.chip"},
                         true, "name the device, then the level") {}

 protected:
  void AddOptions(OptionSet& options) override {
    options.Text("LEVEL", "LEVEL", "Lock level, from 1", level_).required = true;
  }

  std::vector<std::uint8_t> Check(const DeviceProfile& device) override {
    const auto& codes = device.operations.lock;
    if (codes.empty()) throw UsageError(device.name + " has no lock operation" + OtherWay(device));
    if (options().parallel) throw UsageError("lock: the parallel engine has no lock operation");
    const std::string levels =
        codes.size() == 1 ? "level 1 only" : fmt::format("levels 1 to {}", codes.size());
    if (level_.empty()) {
      throw UsageError(fmt::format("lock: name the level; {} has {}", device.name, levels));
    }
    std::size_t level = 0;
    const char* const stop = level_.data() + level_.size();
    const auto [end, error] = std::from_chars(level_.data(), stop, level);
    if (error != std::errc{} || end != stop || level < 1 || level > codes.size()) {
      throw UsageError(fmt::format("lock: level {}; {} has {}", level_, device.name, levels));
    }
    return {codes[level - 1]};
  }

  std::string Success(OperationRun& /*run*/, Report& /*report*/) override {
    return fmt::format("locked at level {}.", level_);
  }

 private:
  std::string level_;
};

}  // namespace

std::unique_ptr<Command> MakeLock() { return std::make_unique<LockCommand>(); }

}  // namespace fliglaf::cli
