#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "cli/exit_status.h"
#include "cli/operation_options.h"
#include "cli/operation_run.h"
#include "cli/report.h"
#include "devices/device_profile.h"
#include "devices/kinds/device_kind.h"

namespace fliglaf::cli {

/// NAME=VALUE of the command line: views of its text.
struct Assignment {
  std::string_view name;
  std::string_view value;
};

/// Throws UsageError, with an example, for a text without '='.
[[nodiscard]] Assignment SplitAssignment(std::string_view text, std::string_view example);

[[nodiscard]] std::string_view WithoutHexPrefix(std::string_view value);

/// A value of one or two hexadecimal digits, with or without 0x. Throws UsageError, which begins
/// with the whole assignment, `text`.
[[nodiscard]] std::uint8_t ByteValue(std::string_view text, std::string_view value);

/// The option that confirms beforehand what cannot be undone.
void AddYes(OptionSet& options, bool& yes);

/// A configuration byte and the value to write.
struct ConfigAssignment {
  ConfigByte byte;
  std::uint8_t value;
  std::uint8_t changed = 0xFF;  ///< bits that may change
};

/// The configuration bytes of a device, as the image of a run holds them. `options` and `device`
/// outlive it.
class Configuration {
 public:
  Configuration(const OperationOptions& options, const DeviceProfile& device)
      : options_(options), device_(device), bytes_(ConfigBytesOf(device)) {}

  [[nodiscard]] const std::vector<ConfigByte>& bytes() const { return bytes_; }
  /// Throws UsageError for a device whose configuration no operation writes.
  void RequireWritable() const;

  /// Where the bytes are; begins with the first use. Throws what OperationRun does.
  [[nodiscard]] OperationRun& run();
  [[nodiscard]] std::uint8_t& Byte(const ConfigByte& byte) {
    return run().session().image()[static_cast<std::size_t>(byte.image_byte)];
  }
  /// All of them: "low=E1 high=D9", and whether the device hides what they are.
  [[nodiscard]] std::string Values();

  /// Whether the device hides the bytes: what was read is not what it holds.
  [[nodiscard]] bool AreHidden();

  /// Reads the device into the image.
  [[nodiscard]] Report Read();
  /// Sets what to write. A write that would disable the programming interface must be confirmed, at
  /// the terminal or beforehand: throws UsageError otherwise.
  void Plan(std::vector<ConfigAssignment> assignments, bool confirmed);
  /// Writes what was planned, and reads it back where that can be done. Throws UsageError where that
  /// would overwrite a hidden byte.
  [[nodiscard]] Report Write();

 private:
  [[nodiscard]] Report Compared(Report report);
  [[nodiscard]] std::uint8_t Shown(const ConfigByte& byte);

  const OperationOptions& options_;
  const DeviceProfile& device_;
  std::vector<ConfigByte> bytes_;
  std::vector<ConfigAssignment> assignments_;
  std::vector<ConfigHazard> hazards_;
  std::optional<OperationRun> run_;
};

}  // namespace fliglaf::cli
