#include "record/text.h"

#include <array>
#include <charconv>

#include <fmt/format.h>

#include "shared/utf8.h"

namespace fliglaf::record {
namespace {

struct Escape {
  char16_t character;
  char letter;
};
constexpr std::array kEscapes{Escape{u'"', '"'}, Escape{u'\\', '\\'}, Escape{u'\n', 'n'},
                              Escape{u'\r', 'r'}, Escape{u'\t', 't'}};

char FindEscape(char32_t character) {
  for (const Escape& escape : kEscapes) {
    if (escape.character == character) return escape.letter;
  }
  return 0;
}

void AppendUtf16(std::u16string& text, char32_t c) {
  if (c < 0x10000) {
    text += static_cast<char16_t>(c);
  } else {
    text += static_cast<char16_t>(0xD7C0 + (c >> 10));
    text += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
  }
}

/// Takes one character off the front of `bytes`, which are not empty.
char32_t TakeCharacter(std::string_view& bytes) {
  const auto lead = static_cast<unsigned char>(bytes.front());
  if (const auto character = TakeUtf8(bytes)) return *character;
  throw TextError(fmt::format("byte 0x{:02X} is not UTF-8 here", lead));
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

bool IsWordCharacter(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

std::string Quote(std::u16string_view text) {
  std::string quoted = "\"";
  while (!text.empty()) {
    const char32_t c = TakeUtf16(text);
    if (const char letter = FindEscape(c)) {
      quoted += '\\';
      quoted += letter;
    } else {
      AppendUtf8(quoted, c);
    }
  }
  return quoted + '"';
}

std::u16string Utf16(std::string_view bytes) {
  std::u16string text;
  while (!bytes.empty()) AppendUtf16(text, TakeCharacter(bytes));
  return text;
}

void Scanner::Expect(char character) {
  if (Take(character)) return;
  throw TextError(AtEnd() ? fmt::format("the line ends; expected '{}'", character)
                          : fmt::format("expected '{}' before \"{}\"", character, Excerpt(rest_)));
}

void Scanner::ExpectEnd() {
  if (!AtEnd()) throw TextError(fmt::format("\"{}\" does not belong here", Excerpt(rest_)));
}

std::string_view Scanner::Word() {
  SkipSpaces();
  std::size_t length = 0;
  while (length < rest_.size() && IsWordCharacter(rest_[length])) ++length;
  const std::string_view word = rest_.substr(0, length);
  rest_.remove_prefix(length);
  return word;
}

std::int64_t Scanner::Integer() {
  SkipSpaces();
  const std::string_view start = rest_;
  const bool negative = Take('-');
  const bool hexadecimal = rest_.starts_with("0x") || rest_.starts_with("0X");
  if (hexadecimal) rest_.remove_prefix(2);
  std::int64_t value = 0;
  const char* first = rest_.data();
  const auto [end, error] =
      !rest_.empty() && *first == '-'
          ? std::from_chars_result{first, std::errc::invalid_argument}
          : std::from_chars(first, first + rest_.size(), value, hexadecimal ? 16 : 10);
  if (error == std::errc::result_out_of_range) {
    throw TextError(fmt::format("the number \"{}\" is too large", Excerpt(start)));
  }
  if (error != std::errc{} || (end != first + rest_.size() && IsWordCharacter(*end))) {
    throw TextError(start.empty() ? std::string("the line ends; expected an integer")
                                  : fmt::format("\"{}\" is not an integer (decimal, or hexadecimal "
                                                "after 0x)",
                                                Excerpt(start)));
  }
  rest_.remove_prefix(static_cast<std::size_t>(end - first));
  return negative ? -value : value;
}

std::int64_t Scanner::Integer(std::int64_t least, std::int64_t most, std::string_view what) {
  const std::int64_t value = Integer();
  if (value < least || value > most) {
    throw TextError(fmt::format("{} {}; must be {} to {}", what, value, least, most));
  }
  return value;
}

bool Scanner::TakeHexByte(std::uint8_t& byte) {
  SkipSpaces();
  if (rest_.size() < 2 || HexDigit(rest_[0]) < 0 || HexDigit(rest_[1]) < 0) return false;
  if (rest_.size() > 2 && IsWordCharacter(rest_[2])) return false;
  byte = static_cast<std::uint8_t>(HexDigit(rest_[0]) << 4 | HexDigit(rest_[1]));
  rest_.remove_prefix(2);
  return true;
}

std::u16string Scanner::QuotedText() {
  Expect('"');
  std::u16string text;
  while (!rest_.empty()) {
    char32_t c = TakeCharacter(rest_);
    if (c == U'"') return text;
    if (c == U'\\') {
      const char letter = rest_.empty() ? '\0' : rest_.front();
      c = 0;
      for (const Escape& escape : kEscapes) {
        if (escape.letter == letter) c = escape.character;
      }
      if (c == 0) {
        throw TextError(R"(in a text, a backslash must be followed by ", \, n, r or t)");
      }
      rest_.remove_prefix(1);
    }
    AppendUtf16(text, c);
  }
  throw TextError("the text has no closing quote");
}

}  // namespace fliglaf::record
