#pragma once

#include <algorithm>
#include <cstdint>
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

/// The low `digits` hexadecimal digits of `value`, upper case; none for a negative number of them.
[[nodiscard]] inline std::u16string HexDigits(std::int64_t value, std::int32_t digits) {
  std::u16string text(static_cast<std::size_t>(std::max(digits, 0)), u'0');
  auto pattern = static_cast<std::uint64_t>(value);
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit, pattern /= 16) {
    *digit = u"0123456789ABCDEF"[pattern % 16];
  }
  return text;
}

/// Upper-case hexadecimal without leading zeros; a negative number as its 32-bit pattern.
[[nodiscard]] inline std::u16string HexNumber(std::int64_t value) {
  const std::u16string digits = HexDigits(value, 8);
  return digits.substr(std::min(digits.find_first_not_of(u'0'), digits.size() - 1));
}

}  // namespace fliglaf
