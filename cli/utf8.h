#pragma once

#include <string>
#include <string_view>

namespace fliglaf::cli {

/// UTF-16 as UTF-8; an unpaired surrogate becomes U+FFFD.
[[nodiscard]] std::string ToUtf8(std::u16string_view text);

}  // namespace fliglaf::cli
