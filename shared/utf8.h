#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace fliglaf {

/// Appends a character. A surrogate is written as three bytes like any other character of its size.
void AppendUtf8(std::string& bytes, char32_t character);

/// Takes a character off the front of `bytes`, which are not empty; none, and one byte less, when
/// they do not begin with one.
[[nodiscard]] std::optional<char32_t> TakeUtf8(std::string_view& bytes);

/// The same for UTF-16, in which every surrogate without its partner is a character of its own.
[[nodiscard]] char32_t TakeUtf16(std::u16string_view& units);

/// UTF-16 as UTF-8; an unpaired surrogate becomes U+FFFD.
[[nodiscard]] std::string ToUtf8(std::u16string_view text);

/// `text` as a terminal may be given it: line feeds and tabs stay; other control characters, those
/// that turn the direction of writing and bytes that are not UTF-8 become U+FFFD.
[[nodiscard]] std::string Printable(std::string_view text);

/// The same for a piece of a file in a message: one line of at most `most` characters and "...".
[[nodiscard]] std::string Excerpt(std::string_view text, std::size_t most = 40);

}  // namespace fliglaf
