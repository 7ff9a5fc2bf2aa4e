#pragma once

#include <span>
#include <string_view>

namespace fliglaf {

/// One file of devices/profiles, as it was when the program was built.
struct ProfileText {
  std::string_view file;  ///< without folder
  std::string_view text;
};

/// In the order of the file names.
[[nodiscard]] std::span<const ProfileText> BuiltInProfiles();

}  // namespace fliglaf
