// fliglaf config: the configuration bytes of a device.
#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "cli/commands/table.h"
#include "cli/configuration.h"
#include "cli/operation_options.h"
#include "cli/report.h"
#include "cli/usage_error.h"
#include "devices/nearest_names.h"

namespace fliglaf::cli {
namespace {

std::string Names(const std::vector<ConfigByte>& bytes) {
  std::string names;
  for (const ConfigByte& byte : bytes) {
    if (byte.writable) names += (names.empty() ? "" : ", ") + std::string(byte.name);
  }
  return names;
}

/// NAME=VALUE, the value a byte.
ConfigAssignment ParseAssignment(const std::string& text, const std::vector<ConfigByte>& bytes,
                                 const std::string& device) {
  const Assignment parts = SplitAssignment(text, "low=E2");
  const auto byte = std::ranges::find_if(bytes, [&parts](const ConfigByte& known) {
    return SameIgnoringCase(known.name, parts.name);
  });
  if (byte == bytes.end()) {
    throw UsageError(fmt::format("{}: unknown byte; {} has {}", text, device, Names(bytes)));
  }
  if (!byte->writable) {
    throw UsageError(
        fmt::format("{}: {} cannot be written; {} can", text, byte->name, Names(bytes)));
  }
  return {.byte = *byte, .value = ByteValue(text, parts.value)};
}

/// Null for a byte that is not among them.
const ConfigAssignment* Find(const std::vector<ConfigAssignment>& assignments,
                             std::string_view name) {
  const auto found = std::ranges::find_if(
      assignments, [name](const ConfigAssignment& other) { return other.byte.name == name; });
  return found == assignments.end() ? nullptr : &*found;
}

/// What the options name, each byte once.
std::vector<ConfigAssignment> ParseAssignments(const std::vector<std::string>& texts,
                                               const std::vector<ConfigByte>& bytes,
                                               const DeviceProfile& device) {
  std::vector<ConfigAssignment> assignments;
  for (const std::string& text : texts) {
    const ConfigAssignment added = ParseAssignment(text, bytes, device.name);
    const ConfigAssignment* const given = Find(assignments, added.byte.name);
    if (given == nullptr) {
      assignments.push_back(added);
    } else if (given->value != added.value) {
      throw UsageError(fmt::format("{} contradicts {}={:02X}; give only one", text,
                                   given->byte.name, given->value));
    }
  }
  return assignments;
}

/// Where the device's bytes cannot be read first, a byte that is not named would be overwritten.
void RequireAll(const std::vector<ConfigAssignment>& assignments,
                const std::vector<ConfigByte>& bytes, const DeviceProfile& device) {
  if (ReadsConfig(device) || assignments.size() == bytes.size()) return;
  std::string example = "fliglaf config " + device.name;
  for (const ConfigByte& byte : bytes) {
    const ConfigAssignment* const given = Find(assignments, byte.name);
    example += fmt::format(" {}={}", byte.name,
                           given == nullptr ? "XX" : fmt::format("{:02X}", given->value));
  }
  if (device.config_words > 0) example += " --parallel";
  throw UsageError(
      fmt::format("{}: its configuration cannot be read, so every byte must be given: {}",
                  device.name, example));
}

/// The bits of a byte, highest first: "bits 7, 6".
std::string BitNames(std::uint8_t bits) {
  std::vector<std::string> names;
  for (int bit = 7; bit >= 0; --bit) {
    if ((bits >> bit & 1) != 0) names.push_back(std::to_string(bit));
  }
  return fmt::format("bit{} {}", names.size() == 1 ? "" : "s", fmt::join(names, ", "));
}

/// Throws UsageError for fuses that a write leaves as the device has them. Lock bits may be written
/// and not be shown: bit 1 of the page families always reads as 1.
void RequireKeptBits(const ConfigAssignment& assignment, std::uint8_t read) {
  if (assignment.byte.name.ends_with("lock")) return;
  const auto kept = static_cast<std::uint8_t>(~assignment.byte.bits);
  const auto asked = static_cast<std::uint8_t>((assignment.value ^ read) & kept);
  if (asked == 0) return;
  const std::uint8_t value = (assignment.value & assignment.byte.bits) | (read & kept);
  throw UsageError(fmt::format("{}={:02X}: {} cannot be written here; must be {:02X}",
                               assignment.byte.name, assignment.value, BitNames(asked), value));
}

class ConfigCommand : public Command {
 public:
  ConfigCommand()
      : Command({.name = "config",
                 .summary = "Show the configuration bytes of a device, or write them",
                 .example = "config isp-page-16k low=E2 high=DF --chip bench.chip"}) {}

  void Describe(OptionSet& options) override {
    options_.command = name();
    options_.device.AddDevice(options, "config: name the device, then the bytes to write, if any");
    options.Texts("NAME=VALUE", "NAME=VALUE",
                  "Byte to write, in hexadecimal; without any the bytes are shown", texts_);
    AddYes(options, yes_);
    options_.AddTo(options);
  }

  ExitStatus Run() override {
    options_.writes_device = !texts_.empty();
    const DeviceProfile& device = options_.Begin();
    Configuration configuration(options_, device);
    configuration.RequireWritable();
    const std::vector<ConfigAssignment> assignments =
        ParseAssignments(texts_, configuration.bytes(), device);
    RequireAll(assignments, configuration.bytes(), device);
    configuration.Plan(assignments, yes_);
    return configuration.run().Complete([&] { return Carry(configuration, assignments, device); });
  }

 private:
  [[nodiscard]] static Report Carry(Configuration& configuration,
                                    const std::vector<ConfigAssignment>& assignments,
                                    const DeviceProfile& device) {
    if (ReadsConfig(device)) {
      Report report = configuration.Read();
      if (report.status != ExitStatus::kSuccess) return report;
      for (const ConfigAssignment& assignment : assignments) {
        RequireKeptBits(assignment, configuration.Byte(assignment.byte));
      }
    }
    if (!assignments.empty()) return configuration.Write();
    Report report;
    report.message = fmt::format("{}: {}", device.name, configuration.Values());
    return report;
  }

  OperationOptions options_;
  std::vector<std::string> texts_;
  bool yes_ = false;
};

}  // namespace

std::unique_ptr<Command> MakeConfig() { return std::make_unique<ConfigCommand>(); }

}  // namespace fliglaf::cli
