#pragma once

#include <string_view>

#include "devices/device_profile.h"

namespace fliglaf {

/// What the fields of a device have to be to one another, so that no file can make a routine drive
/// a pin two ways, leave a part of the memory out or run a lock for an erase.
struct ProfileRule {
  int family;              ///< 0: every family
  std::string_view field;  ///< the field to look at
  bool (*kept)(const DeviceProfile&);
  std::string_view text;  ///< what is right, for messages
};

/// The first rule that the device breaks, null if it keeps all.
[[nodiscard]] const ProfileRule* FirstBrokenRule(const DeviceProfile& device);

}  // namespace fliglaf
