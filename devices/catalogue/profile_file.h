#pragma once

#include <string_view>
#include <vector>

#include "devices/device_profile.h"

namespace fliglaf {

/// The devices of one profile file in their order. `text` is TOML: [defaults] holds what the
/// devices inherit, each [[device]] what is its own. `file` names it in messages. Throws
/// ProfileError for a text that is not TOML, an unknown or missing field, a value of a wrong type
/// or out of range, and a device that breaks a rule.
[[nodiscard]] std::vector<DeviceProfile> ParseProfiles(std::string_view text,
                                                       std::string_view file);

}  // namespace fliglaf
