#pragma once

#include <string_view>

#include "devices/device_profile.h"

namespace fliglaf {

/// A constraint between the fields of a device. The rules keep a file from making a routine drive a
/// pin two ways, skip a part of the memory or lock where it should erase.
struct ProfileRule {
  int family;              ///< 0: every family
  std::string_view field;  ///< the field to look at
  bool (*kept)(const DeviceProfile&);
  std::string_view text;  ///< what must hold, for messages
};

/// The first rule that the device breaks, null if it keeps all.
[[nodiscard]] const ProfileRule* FirstBrokenRule(const DeviceProfile& device);

}  // namespace fliglaf
