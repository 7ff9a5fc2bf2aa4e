#include "cli/configuration.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "cli/usage_error.h"
#include "platform/terminal.h"
#include "usb/operation.h"

namespace fliglaf::cli {
namespace {

std::string Names(const std::vector<ConfigByte>& bytes) {
  std::string names;
  for (const ConfigByte& byte : bytes) {
    if (byte.writable) names += (names.empty() ? "" : ", ") + std::string(byte.name);
  }
  return names;
}

/// NAME=VALUE, the value one or two hexadecimal digits.
ConfigAssignment ParseAssignment(const std::string& text, const std::vector<ConfigByte>& bytes,
                                 const std::string& device) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const auto byte = std::ranges::find(bytes, text.substr(0, equals), &ConfigByte::name);
  if (equals == text.size() || byte == bytes.end() || !byte->writable) {
    throw UsageError(fmt::format("{}: expected NAME=VALUE; {} has {}", text, device, Names(bytes)));
  }
  const std::string digits = text.substr(equals + 1);
  std::uint8_t value = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (error != std::errc{} || end != digits.data() + digits.size() || digits.size() > 2) {
    throw UsageError(text + ": the value is a byte of two hexadecimal digits, as in low=E1");
  }
  return {.byte = *byte, .value = value};
}

/// The bits that a write would shut the programming interface with.
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

/// Throws UsageError unless the user wants it all the same.
void AskAboutHazards(const std::vector<ConfigHazard>& hazards, const Options& options) {
  if (hazards.empty() || options.yes) return;
  std::string text;
  for (const ConfigHazard& hazard : hazards) text += Describe(hazard) + "; ";
  if (!platform::IsTerminal(platform::Stream::kInput)) {
    throw UsageError(text +
                     "the device can then not be programmed this way again. --yes writes it");
  }
  std::cerr << text << "the device can then not be programmed this way again. Go on? (y/N) ";
  std::string answer;
  if (!std::getline(std::cin, answer) || answer != "y") throw UsageError("nothing was written");
}

/// Where the device's bytes cannot be read first, one that is not named would be written anyhow.
void RequireAll(const std::vector<ConfigAssignment>& assignments,
                const std::vector<ConfigByte>& bytes, const DeviceProfile& device) {
  if (ReadsConfig(device) || assignments.size() == bytes.size()) return;
  throw UsageError(
      fmt::format("{}: its configuration cannot be read, so that all of it has to be given: {}",
                  device.name, Names(bytes)));
}

}  // namespace

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
        device_.name + ": configuration written; the log tells what word was read back";
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

/// What the device now has, against what was to be written.
Report Configuration::Compared(Report report) {
  std::string wrong;
  for (const ConfigAssignment& assignment : assignments_) {
    const std::uint8_t read = Byte(assignment.byte);
    if (((read ^ assignment.value) & assignment.byte.bits) == 0) continue;
    wrong += fmt::format("; {} was to be {:02X}H and is {:02X}H", assignment.byte.name,
                         assignment.value, read);
  }
  if (wrong.empty()) {
    report.message = fmt::format("{}: configuration written: {}", device_.name, Values());
  } else {
    report.status = ExitStatus::kDiffers;
    report.message = device_.name + ": the configuration is not what was written" + wrong;
  }
  return report;
}

ExitStatus RunConfigCommand(const Options& options, const DeviceProfile& device) {
  Configuration configuration(options, device);
  configuration.RequireWritable();
  std::vector<ConfigAssignment> assignments;
  for (const std::string& text : options.assignments) {
    assignments.push_back(ParseAssignment(text, configuration.bytes(), device.name));
  }
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
