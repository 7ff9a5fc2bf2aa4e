#include "cli/configuration.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli/operation_run.h"
#include "cli/report.h"
#include "cli/usage_error.h"
#include "devices/config_layout.h"
#include "platform/terminal.h"
#include "usb/operation.h"

namespace fliglaf::cli {
namespace {

struct Assignment {
  ConfigByte byte;
  std::uint8_t value;
};

std::string Names(const std::vector<ConfigByte>& bytes) {
  std::string names;
  for (const ConfigByte& byte : bytes) {
    if (byte.writable) names += (names.empty() ? "" : ", ") + std::string(byte.name);
  }
  return names;
}

/// NAME=VALUE, the value one or two hexadecimal digits.
Assignment ParseAssignment(const std::string& text, const std::vector<ConfigByte>& bytes,
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
  return {*byte, value};
}

/// The bits that a write would shut the programming interface with.
std::vector<ConfigHazard> HazardsOf(const std::vector<Assignment>& assignments,
                                    const DeviceProfile& device) {
  std::vector<ConfigHazard> found;
  for (const ConfigHazard& hazard : ConfigHazardsOf(device)) {
    for (const Assignment& assignment : assignments) {
      const bool bit = (assignment.value >> hazard.bit & 1) != 0;
      if (assignment.byte.name == hazard.byte && bit == hazard.value) found.push_back(hazard);
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

class Configuration {
 public:
  Configuration(const Options& options, const DeviceProfile& device)
      : options_(options), device_(device), bytes_(ConfigBytesOf(device)) {
    if (bytes_.empty() || !device.operations.config) {
      throw UsageError(device.name + " has no configuration bytes to write");
    }
    for (const std::string& text : options.assignments) {
      assignments_.push_back(ParseAssignment(text, bytes_, device.name));
    }
    if (!ReadsConfig(device)) RequireAll();
    hazards_ = HazardsOf(assignments_, device);
    AskAboutHazards(hazards_, options);
    run_.emplace(options, device);
  }

  ExitStatus Run() {
    Report report = ReadsConfig(device_) ? Read() : Report{};
    if (report.status == ExitStatus::kSuccess) report = Carry();
    PrintReport(options_, report);
    run_->Keep();
    return report.status;
  }

 private:
  /// Where the device's bytes cannot be read first, one that is not named would be written anyhow.
  void RequireAll() const {
    if (assignments_.size() == bytes_.size()) return;
    throw UsageError(
        fmt::format("{}: its configuration cannot be read, so that all of it has to be given: {}",
                    device_.name, Names(bytes_)));
  }

  Report Read() { return run_->Run(std::array{std::uint8_t{operation::kRead}}, Recorded::kNo); }

  Report Carry() {
    if (assignments_.empty()) {
      Report report;
      report.message = fmt::format("{}: {}", device_.name, Values());
      return report;
    }
    for (const Assignment& assignment : assignments_) Byte(assignment.byte) = assignment.value;
    Report report = run_->Run(std::array{*device_.operations.config}, Recorded::kYes);
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
  Report Compared(Report report) {
    std::string wrong;
    for (const Assignment& assignment : assignments_) {
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

  std::uint8_t& Byte(const ConfigByte& byte) {
    return run_->session().image()[static_cast<std::size_t>(byte.image_byte)];
  }

  std::string Values() {
    std::string values;
    for (const ConfigByte& byte : bytes_) {
      values += fmt::format("{}{}={:02X}", values.empty() ? "" : " ", byte.name, Byte(byte));
    }
    return values;
  }

  const Options& options_;
  const DeviceProfile& device_;
  std::vector<ConfigByte> bytes_;
  std::vector<Assignment> assignments_;
  std::vector<ConfigHazard> hazards_;
  std::optional<OperationRun> run_;
};

}  // namespace

ExitStatus RunConfigCommand(const Options& options, const DeviceProfile& device) {
  Configuration configuration(options, device);
  platform::CatchStopSignals();
  return configuration.Run();
}

}  // namespace fliglaf::cli
