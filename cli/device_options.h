#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "cli/option_set.h"
#include "devices/catalogue/device_catalogue.h"

namespace fliglaf::cli {

/// Which device a command works on.
class DeviceOptions {
 public:
  /// Adds DEVICE; `when_missing` is the error without it.
  void AddDevice(OptionSet& options, std::string when_missing);
  void AddFolders(OptionSet& options);

  /// The devices built in and those of the folders. Throws ProfileError.
  [[nodiscard]] const DeviceCatalogue& Load();
  /// The device, for a command that works on it: from here on a signal stops the run instead of
  /// ending the process. Throws UsageError for an unknown name, ProfileError.
  [[nodiscard]] const DeviceProfile& Find();

  /// Of the devices known, another one with a signature that the library describes like this; null
  /// if no device has it.
  [[nodiscard]] const DeviceProfile* FindBySignature(const std::string& described) const;

  /// As the user wrote it.
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const std::vector<std::filesystem::path>& folders() const { return folders_; }

 private:
  std::string name_;
  std::vector<std::filesystem::path> folders_;
  DeviceCatalogue catalogue_;
};

/// "Maker 1E   Device 5106", as the library's log and its message box have it.
[[nodiscard]] std::string DescribeSignature(const Signature& signature);

}  // namespace fliglaf::cli
