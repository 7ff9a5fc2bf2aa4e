// What a kind of device is outside the library: where its memories and its configuration lie, what
// its profiles must keep to, and the simulated part.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "devices/device_profile.h"
#include "image_layout/image_layout.h"
#include "simulator/clock.h"
#include "simulator/part.h"

namespace fliglaf {

/// A constraint between the fields of a device. The rules keep a file from making a routine drive a
/// pin two ways, skip a part of the memory or lock where it should erase.
struct ProfileRule {
  std::string_view field;  ///< the field to look at
  bool (*kept)(const DeviceProfile&);
  std::string_view text;  ///< what must hold, for messages
};

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

/// The layout of the device's family.
[[nodiscard]] ImageLayout FamilyLayout(const DeviceProfile& device);

/// One kind, in a file of its own. What it leaves out it does not have.
struct DeviceKind {
  ImageLayout (*layout)(const DeviceProfile&) = FamilyLayout;
  /// Beyond those that every device keeps.
  std::span<const ProfileRule> rules;
  std::vector<ConfigByte> (*config_bytes)(const DeviceProfile&) = nullptr;
  std::span<const ConfigHazard> (*hazards)(const DeviceProfile&) = nullptr;
  /// A read of the device brings its configuration bytes into the image.
  bool reads_config = false;
  bool runs_over_parallel_port = false;
  /// A new one. `clock` outlives it.
  simulator::Part (*make_part)(const DeviceProfile&, const simulator::Clock& clock);
};

/// Throws std::invalid_argument for a family that does not exist.
[[nodiscard]] const DeviceKind& KindOf(const DeviceProfile& device);

/// The first rule that the device breaks, of those for every device and those of its kind; null if
/// it keeps all.
[[nodiscard]] const ProfileRule* FirstBrokenRule(const DeviceProfile& device);

/// Where the memories and the configuration of a device lie in its image.
[[nodiscard]] ImageLayout LayoutOf(const DeviceProfile& device);

/// The configuration bytes of a device; none for one without any, or whose are not known here.
[[nodiscard]] std::vector<ConfigByte> ConfigBytesOf(const DeviceProfile& device);

[[nodiscard]] std::span<const ConfigHazard> ConfigHazardsOf(const DeviceProfile& device);

/// True when a read of the device brings its configuration bytes into the image.
[[nodiscard]] bool ReadsConfig(const DeviceProfile& device);

/// Whether the parallel engine reaches the device.
[[nodiscard]] bool RunsOverParallelPort(const DeviceProfile& device);

}  // namespace fliglaf
