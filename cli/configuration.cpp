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

constexpr std::string_view kReadLock = "read-lock";
constexpr std::uint8_t kLastBlock = 0x80;

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

/// Throws UsageError unless the user confirms it, Stopped at a stop.
void AskAboutHazards(const std::vector<ConfigHazard>& hazards, bool confirmed) {
  if (hazards.empty() || confirmed) return;
  std::string text;
  for (const ConfigHazard& hazard : hazards) text += Describe(hazard) + "; ";
  text += "after that the device cannot be programmed this way again.";
  if (!platform::IsTerminal(platform::Stream::kInput)) {
    throw UsageError(text + " Add --yes to write it");
  }
  if (AskYesNo(text + " Go on?")) return;
  if (platform::StopRequested()) throw platform::Stopped();
  throw UsageError("nothing was written");
}

}  // namespace

void AddYes(OptionSet& options, bool& yes) {
  options.Flag("--yes", "Confirm a change that disables the programming interface of the device",
               yes);
}

Assignment SplitAssignment(std::string_view text, std::string_view example) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos) {
    throw UsageError(fmt::format("{}: must be NAME=VALUE, such as {}", text, example));
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
        "{}: the value must be one or two hexadecimal digits, such as E2 or 0xE2", text));
  }
  return byte;
}

void Configuration::RequireWritable() const {
  if (bytes_.empty()) throw UsageError(device_.name + " has no configuration bytes");
  if (!device_.operations.config) {
    throw UsageError(device_.name + ": its configuration bytes cannot be written");
  }
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
  return AreHidden() ? values + "; the read lock hides the true values" : values;
}

/// A read lock on the last block, its bit 7, covers the lock bytes too: all of them read as 00.
bool Configuration::AreHidden() {
  const auto lock = std::ranges::find(bytes_, kReadLock, &ConfigByte::name);
  return lock != bytes_.end() && Byte(*lock) == 0;
}

Report Configuration::Read() {
  return run().Run(std::array{std::uint8_t{operation::kRead}}, Recorded::kIfNoOther);
}

void Configuration::Plan(std::vector<ConfigAssignment> assignments, bool confirmed) {
  assignments_ = std::move(assignments);
  hazards_ = HazardsOf(assignments_, device_);
  AskAboutHazards(hazards_, confirmed);
}

Report Configuration::Write() {
  if (AreHidden() && assignments_.size() < bytes_.size()) {
    throw UsageError(fmt::format(
        "{0}: the read lock hides the lock bytes, so both must be given: fliglaf config {0} "
        "write-lock=XX read-lock=XX",
        device_.name));
  }
  for (const ConfigAssignment& assignment : assignments_) Byte(assignment.byte) = assignment.value;
  Report report = run().Run(std::array{*device_.operations.config}, Recorded::kYes);
  if (report.status != ExitStatus::kSuccess) return report;
  if (device_.config_words > 0) {
    report.message =
        device_.name + ": configuration written; the log shows the word that was read back";
    return report;
  }
  if (!ReadsConfig(device_) || !hazards_.empty()) {
    report.message = fmt::format(
        "{}: configuration written; {}", device_.name,
        hazards_.empty() ? "it cannot be read back"
                         : "not read back, since the new value disables the programming interface");
    return report;
  }
  Report read_back = Read();
  if (read_back.status != ExitStatus::kSuccess) return read_back;
  return Compared(std::move(read_back));
}

/// The bits of a byte that were read from the device.
std::uint8_t Configuration::Shown(const ConfigByte& byte) {
  if (!AreHidden()) return byte.bits;
  return byte.name == kReadLock ? kLastBlock : 0;
}

/// Compares what the device now has with what was written.
Report Configuration::Compared(Report report) {
  std::string wrong;
  for (const ConfigAssignment& assignment : assignments_) {
    const std::uint8_t read = Byte(assignment.byte);
    if (((read ^ assignment.value) & Shown(assignment.byte)) == 0) continue;
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

}  // namespace fliglaf::cli
