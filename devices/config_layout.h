#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "devices/device_profile.h"

namespace fliglaf {

/// A configuration byte of a device, as it stands in the image.
struct ConfigByte {
  std::string_view name;
  std::int64_t image_byte;
  /// Bits that the device really has: the others may read otherwise than they were written.
  std::uint8_t bits;
  bool writable;
};

/// A bit that shuts the device's programming interface when it is written to `value`.
struct ConfigHazard {
  std::string_view byte;
  int bit;
  bool value;
  std::string_view name;    ///< as the data sheets call it
  std::string_view effect;  ///< "turns serial programming off"
};

/// The configuration bytes of a device; none for a family without any, or whose are not known here.
[[nodiscard]] std::vector<ConfigByte> ConfigBytesOf(const DeviceProfile& device);

/// True when a read of the device brings its configuration bytes into the image.
[[nodiscard]] bool ReadsConfig(const DeviceProfile& device);

[[nodiscard]] std::span<const ConfigHazard> ConfigHazardsOf(const DeviceProfile& device);

}  // namespace fliglaf
