#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "devices/device_profile.h"
#include "devices/profile_error.h"

namespace fliglaf {

/// The devices that the program knows. A file that cannot be used leaves it as it was.
class DeviceCatalogue {
 public:
  /// The devices built into the program.
  [[nodiscard]] static DeviceCatalogue BuiltIn();

  /// Adds the devices of one profile file (see ParseProfiles). Throws ProfileError, also for a name
  /// that is used already.
  void Add(std::string_view text, std::string_view file);

  /// Adds every *.toml of a folder, by file name, all or none; folders in it are skipped. Throws
  /// ProfileError as Add does, for a folder that cannot be read or holds no such file, and for one
  /// that is not a regular file of at most 1 MiB.
  void AddFolder(const std::filesystem::path& folder);

  /// Null for a name that is not known; upper and lower case are the same. Valid until a device is
  /// added.
  [[nodiscard]] const DeviceProfile* Find(std::string_view name) const;

  /// The names that may have been meant by one that is not known, three at most.
  [[nodiscard]] std::vector<std::string> NearestNames(std::string_view name) const;

  [[nodiscard]] std::span<const DeviceProfile> all() const { return devices_; }

 private:
  std::vector<DeviceProfile> devices_;
  std::map<std::string, std::size_t> places_;  ///< in devices_, by the name in lower case
};

}  // namespace fliglaf
