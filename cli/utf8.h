#pragma once

#include <string>
#include <string_view>

namespace fliglaf::cli {

/// UTF-16 as UTF-8; an unpaired surrogate becomes U+FFFD.
[[nodiscard]] std::string ToUtf8(std::u16string_view text);

/// ASCII as UTF-16.
[[nodiscard]] inline std::u16string Widen(std::string_view ascii) {
  return {ascii.begin(), ascii.end()};
}

}  // namespace fliglaf::cli
