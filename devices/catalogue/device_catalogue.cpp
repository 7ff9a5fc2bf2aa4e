#include "devices/catalogue/device_catalogue.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <map>
#include <system_error>

#include <fmt/format.h>

#include "devices/catalogue/built_in_profiles.h"
#include "devices/catalogue/profile_file.h"
#include "devices/nearest_names.h"
#include "shared/utf8.h"

namespace fliglaf {
namespace {

namespace fs = std::filesystem;

/// The largest profile file, 1 MiB; the built-in ones have a few KiB.
constexpr std::size_t kLargestProfile = std::size_t{1} << 20;

std::vector<fs::path> ProfileFiles(const fs::path& folder) {
  std::error_code error;
  std::error_code ignored;  // what is not there any more is found out on reading
  std::vector<fs::path> files;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    if (at->path().extension() == ".toml" && !fs::is_directory(at->path(), ignored))
      files.push_back(at->path());
  }
  if (error) {
    throw ProfileError(
        fmt::format("{}: cannot be read: {}; it must be a folder with device profiles",
                    folder.string(), error.message()));
  }
  if (files.empty()) {
    throw ProfileError(
        fmt::format("{}: holds no device profile, a file named *.toml", folder.string()));
  }
  std::ranges::sort(files);
  return files;
}

/// `name` is the file in messages. A pipe or a device is not opened, as it may never end.
std::string FileText(const fs::path& file, const std::string& name) {
  std::error_code error;
  if (fs::exists(file, error) && !fs::is_regular_file(file, error)) {
    throw ProfileError(name + ": not a regular file, which a device profile must be");
  }
  std::ifstream in(file, std::ios::binary);
  std::string text(kLargestProfile + 1, '\0');
  in.read(text.data(), std::ssize(text));
  text.resize(static_cast<std::size_t>(in.gcount()));
  if (!in.is_open() || in.bad()) {
    throw ProfileError(name + ": the device profile cannot be read");
  }
  if (text.size() > kLargestProfile) {
    throw ProfileError(
        fmt::format("{}: larger than {} MiB, the most that is read", name, kLargestProfile >> 20));
  }
  return text;
}

}  // namespace

DeviceCatalogue DeviceCatalogue::BuiltIn() {
  DeviceCatalogue catalogue;
  for (const ProfileText& profile : BuiltInProfiles()) {
    catalogue.Add(profile.text, fmt::format("built-in {}", profile.file));
  }
  return catalogue;
}

void DeviceCatalogue::Add(std::string_view text, std::string_view file) {
  std::vector<DeviceProfile> added = ParseProfiles(text, file);
  std::map<std::string, std::size_t> places;  // of these devices alone
  for (auto device = added.begin(); device != added.end(); ++device) {
    const auto place = devices_.size() + static_cast<std::size_t>(device - added.begin());
    const auto [other, is_new] = places.emplace(LowerCase(device->name), place);
    const DeviceProfile* known =
        is_new ? Find(device->name) : &added[other->second - devices_.size()];
    if (known == nullptr) continue;
    throw ProfileError(fmt::format(
        "{}: the name '{}' is already used at {}; each device needs a name of its own, and upper "
        "and lower case count as the same",
        device->source, device->name, known->source));
  }
  devices_.insert(devices_.end(), std::move_iterator(added.begin()),
                  std::move_iterator(added.end()));
  places_.merge(places);
}

void DeviceCatalogue::AddFolder(const fs::path& folder) {
  DeviceCatalogue extended = *this;
  for (const fs::path& file : ProfileFiles(folder)) {
    const std::string name = Printable(file.string());
    extended.Add(FileText(file, name), name);
  }
  *this = std::move(extended);
}

const DeviceProfile* DeviceCatalogue::Find(std::string_view name) const {
  const auto found = places_.find(LowerCase(name));
  return found == places_.end() ? nullptr : &devices_[found->second];
}

std::vector<std::string> DeviceCatalogue::NearestNames(std::string_view name) const {
  std::vector<std::string_view> names;
  for (const DeviceProfile& device : devices_) names.push_back(device.name);
  return fliglaf::NearestNames(name, names);
}

}  // namespace fliglaf
