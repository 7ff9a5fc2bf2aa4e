#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace fliglaf::platform {

/// Captions with an ampersand before the character that is pressed with Alt to get there: another
/// one for each caption, as long as there are any. Ampersands of the captions themselves are
/// doubled, so that they are shown.
[[nodiscard]] std::vector<std::u16string> WithAccessKeys(
    const std::vector<std::u16string_view>& captions);

/// A caption without an access key, its ampersands doubled.
[[nodiscard]] std::u16string WithoutAccessKey(std::u16string_view caption);

}  // namespace fliglaf::platform
