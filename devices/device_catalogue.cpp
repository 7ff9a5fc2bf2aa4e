#include "devices/device_catalogue.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

#include <fmt/format.h>

#include "devices/built_in_profiles.h"
#include "devices/nearest_names.h"
#include "devices/profile_file.h"

namespace fliglaf {
namespace {

namespace fs = std::filesystem;

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
        fmt::format("{}: cannot be read ({}); a folder with device profiles is wanted",
                    folder.string(), error.message()));
  }
  if (files.empty()) {
    throw ProfileError(
        fmt::format("{}: holds no device profile; files named *.toml are wanted", folder.string()));
  }
  std::ranges::sort(files);
  return files;
}

std::string FileText(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  if (!in.is_open() || in.bad()) {
    throw ProfileError(fmt::format("{}: the device profile cannot be read", file.string()));
  }
  return text;
}

const DeviceProfile* FindIn(std::span<const DeviceProfile> devices, std::string_view name) {
  const auto found = std::ranges::find_if(
      devices, [name](const DeviceProfile& device) { return SameIgnoringCase(device.name, name); });
  return found == devices.end() ? nullptr : &*found;
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
  for (auto device = added.begin(); device != added.end(); ++device) {
    const DeviceProfile* known = FindIn(devices_, device->name);
    if (known == nullptr) known = FindIn({added.begin(), device}, device->name);
    if (known == nullptr) continue;
    throw ProfileError(fmt::format(
        "{}: field 'name' is '{}', which is used already at {}; each device needs a name of its "
        "own, upper and lower case being the same",
        device->source, device->name, known->source));
  }
  devices_.insert(devices_.end(), std::move_iterator(added.begin()),
                  std::move_iterator(added.end()));
}

void DeviceCatalogue::AddFolder(const fs::path& folder) {
  DeviceCatalogue extended = *this;
  for (const fs::path& file : ProfileFiles(folder)) extended.Add(FileText(file), file.string());
  *this = std::move(extended);
}

const DeviceProfile* DeviceCatalogue::Find(std::string_view name) const {
  return FindIn(devices_, name);
}

std::vector<std::string> DeviceCatalogue::NearestNames(std::string_view name) const {
  std::vector<std::string_view> names;
  for (const DeviceProfile& device : devices_) names.push_back(device.name);
  return fliglaf::NearestNames(name, names);
}

}  // namespace fliglaf
