#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace fliglaf {

/// The path whose name is `text` in UTF-8, whatever the system's own narrow characters are. The
/// other way round `string()` gives UTF-8 on every system that the library is built for.
[[nodiscard]] inline std::filesystem::path Utf8Path(std::string_view text) {
  return std::u8string(text.begin(), text.end());
}

}  // namespace fliglaf
