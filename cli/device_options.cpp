#include "cli/device_options.h"

#include <algorithm>

#include <fmt/format.h>

#include "platform/terminal.h"
#include "shared/utf8.h"

namespace fliglaf::cli {

void DeviceOptions::AddDevice(OptionSet& options, std::string when_missing) {
  options.Text("DEVICE", "NAME", "Device, by its name in \"fliglaf devices\"", name_).when_missing =
      std::move(when_missing);
}

void DeviceOptions::AddFolders(OptionSet& options) {
  options.Folders("--devices", "Folder with further device profiles (*.toml)", folders_);
}

const DeviceCatalogue& DeviceOptions::Load() {
  catalogue_ = DeviceCatalogue::BuiltIn();
  for (const auto& folder : folders_) catalogue_.AddFolder(folder);
  return catalogue_;
}

const DeviceProfile& DeviceOptions::Find() {
  platform::CatchStopSignals();
  if (const DeviceProfile* const device = Load().Find(name_)) return *device;
  const auto nearest = catalogue_.NearestNames(name_);
  throw UsageError(fmt::format("unknown device \"{}\"; {}", Excerpt(name_),
                               nearest.empty()
                                   ? "\"fliglaf devices\" lists those that are known"
                                   : fmt::format("did you mean {}?", fmt::join(nearest, ", "))));
}

const DeviceProfile* DeviceOptions::FindBySignature(const std::string& described) const {
  const auto found = std::ranges::find_if(catalogue_.all(), [&](const DeviceProfile& device) {
    return device.signature && DescribeSignature(*device.signature) == described;
  });
  return found == catalogue_.all().end() ? nullptr : &*found;
}

std::string DescribeSignature(const Signature& signature) {
  return fmt::format("Maker {:02X}   Device {:02X}{:02X}", signature[0], signature[1],
                     signature[2]);
}

}  // namespace fliglaf::cli
