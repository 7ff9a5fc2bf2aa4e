#pragma once

#include <string>
#include <string_view>

namespace fliglaf {

/// Bytes as UTF-16, each a character of its own: ASCII, or ISO 8859-1.
[[nodiscard]] inline std::u16string Widen(std::string_view bytes) {
  std::u16string text;
  text.reserve(bytes.size());
  for (const char byte : bytes) text += static_cast<char16_t>(static_cast<unsigned char>(byte));
  return text;
}

}  // namespace fliglaf
