#include "cli/configuration.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "cli/prompt.h"
#include "cli/usage_error.h"
#include "devices/nearest_names.h"
#include "platform/terminal.h"
#include "usb/request/operation.h"

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
std::vector<ConfigAssignment> ParseAssignments(const Options& options,
                                               const std::vector<ConfigByte>& bytes,
                                               const DeviceProfile& device) {
  std::vector<ConfigAssignment> assignments;
  for (const std::string& text : options.assignments) {
    const ConfigAssignment added = ParseAssignment(text, bytes, device.name);
    const ConfigAssignment* const given = Find(assignments, added.byte.name);
    if (given == nullptr) {
      assignments.push_back(added);
    } else if (given->value != added.value) {
      throw UsageError(fmt::format("{} contradicts {}={:02X}; give one of them", text,
                                   given->byte.name, given->value));
    }
  }
  return assignments;
}

/// The bits with which a write would disable the programming interface.
std::vector<ConfigHazard> HazardsOf(const std::vector<ConfigAssignment>& assignments,
                                    const DeviceProfile& device) {
  std::vector<ConfigHazard> found;
  for (const ConfigHazard& hazard : ConfigHazardsOf(device)) {
    for (const ConfigAssignment& assignment : assignments) {
      const bool bit = (assignment.value >> hazard.bit & 1) != 0;
      const bool changed = (assignment.changed >> hazard.bit & 1) != 0;
      if (assignment.byte.name == hazard.byte && changed && bit == hazard.value) {
        found.push_back(hazard);
      }
    }
  }
  return found;
}

std::string Describe(const ConfigHazard& hazard) {
  return fmt::format("{} bit {} = {} ({}) {}", hazard.byte, hazard.bit, hazard.value ? 1 : 0,
                     hazard.name, hazard.effect);
}

/// Throws UsageError unless the user wants it all the same, Stopped at a stop.
void AskAboutHazards(const std::vector<ConfigHazard>& hazards, const Options& options) {
  if (hazards.empty() || options.yes) return;
  std::string text;
  for (const ConfigHazard& hazard : hazards) text += Describe(hazard) + "; ";
  text += "after that the device cannot be programmed this way again.";
  if (!platform::IsTerminal(platform::Stream::kInput)) {
    throw UsageError(text + " To write it all the same, add --yes");
  }
  if (AskYesNo(text + " Go on?")) return;
  if (platform::StopRequested()) throw platform::Stopped();
  throw UsageError("nothing was written");
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

}  // namespace

Assignment SplitAssignment(std::string_view text, std::string_view example) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos) {
    throw UsageError(fmt::format("{}: expected NAME=VALUE, as in {}", text, example));
  }
  return {.name = text.substr(0, equals), .value = text.substr(equals + 1)};
}

std::string_view WithoutHexPrefix(std::string_view value) {
  return value.substr(value.starts_with("0x") || value.starts_with("0X") ? 2 : 0);
}

std::uint8_t ByteValue(std::string_view text, std::string_view value) {
  const std::string_view digits = WithoutHexPrefix(value);
  std::uint8_t byte = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
  if (error != std::errc{} || end != digits.data() + digits.size() || digits.size() > 2) {
    throw UsageError(fmt::format(
        "{}: the value must be a byte of one or two hexadecimal digits, as E2 or 0xE2", text));
  }
  return byte;
}

void Configuration::RequireWritable() const {
  if (!bytes_.empty() && device_.operations.config) return;
  throw UsageError(device_.name + " has no configuration bytes to write");
}

OperationRun& Configuration::run() {
  if (!run_) run_.emplace(options_, device_);
  return *run_;
}

std::string Configuration::Values() {
  std::string values;
  for (const ConfigByte& byte : bytes_) {
    values += fmt::format("{}{}={:02X}", values.empty() ? "" : " ", byte.name, Byte(byte));
  }
  return values;
}

Report Configuration::Read() {
  return run().Run(std::array{std::uint8_t{operation::kRead}}, Recorded::kIfNoOther);
}

void Configuration::Plan(std::vector<ConfigAssignment> assignments) {
  assignments_ = std::move(assignments);
  hazards_ = HazardsOf(assignments_, device_);
  AskAboutHazards(hazards_, options_);
}

Report Configuration::Write() {
  for (const ConfigAssignment& assignment : assignments_) Byte(assignment.byte) = assignment.value;
  Report report = run().Run(std::array{*device_.operations.config}, Recorded::kYes);
  if (report.status != ExitStatus::kSuccess) return report;
  if (device_.config_words > 0) {
    report.message =
        device_.name + ": configuration written; the log shows the word that was read back";
    return report;
  }
  if (!ReadsConfig(device_) || !hazards_.empty()) {
    report.message = device_.name + ": configuration written; it cannot be read back";
    return report;
  }
  Report read_back = Read();
  if (read_back.status != ExitStatus::kSuccess) return read_back;
  return Compared(report);
}

/// Compares what the device now has with what was written.
Report Configuration::Compared(Report report) {
  std::string wrong;
  for (const ConfigAssignment& assignment : assignments_) {
    const std::uint8_t read = Byte(assignment.byte);
    if (((read ^ assignment.value) & assignment.byte.bits) == 0) continue;
    wrong += fmt::format("{}{} is {:02X}, not {:02X}", wrong.empty() ? ": " : ", ",
                         assignment.byte.name, read, assignment.value);
  }
  if (wrong.empty()) {
    report.message = fmt::format("{}: configuration written: {}", device_.name, Values());
  } else {
    report.status = ExitStatus::kDiffers;
    report.message = device_.name + ": the configuration differs from what was written" + wrong;
  }
  return report;
}

ExitStatus RunConfigCommand(const Options& options, const DeviceProfile& device) {
  Configuration configuration(options, device);
  configuration.RequireWritable();
  std::vector<ConfigAssignment> assignments =
      ParseAssignments(options, configuration.bytes(), device);
  RequireAll(assignments, configuration.bytes(), device);
  const bool writes = !assignments.empty();
  configuration.Plan(std::move(assignments));
  OperationRun& run = configuration.run();

  Report report = ReadsConfig(device) ? configuration.Read() : Report{};
  if (report.status == ExitStatus::kSuccess && writes) {
    report = configuration.Write();
  } else if (report.status == ExitStatus::kSuccess) {
    report = Report{};
    report.message = fmt::format("{}: {}", device.name, configuration.Values());
  }
  run.Keep(report);
  return PrintReport(options, report);
}

}  // namespace fliglaf::cli
