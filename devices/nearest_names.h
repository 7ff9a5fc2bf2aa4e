#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fliglaf {

/// `text` with A to Z, and no other letter, in lower case.
[[nodiscard]] std::string LowerCase(std::string_view text);

/// Whether two names are the same but for the case of A to Z, whatever the locale.
[[nodiscard]] bool SameIgnoringCase(std::string_view one, std::string_view other);

/// The names that somebody who wrote `word` may have meant, the nearest first and three at most:
/// those that hold it, and those no more than a third of their letters away. Case does not count.
[[nodiscard]] std::vector<std::string> NearestNames(std::string_view word,
                                                    std::span<const std::string_view> names);

}  // namespace fliglaf
