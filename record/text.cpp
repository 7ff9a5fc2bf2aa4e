#include "record/text.h"

#include <array>
#include <charconv>

#include <fmt/format.h>

namespace fliglaf::record {
namespace {

constexpr std::size_t kMostShown = 40;

struct Escape {
  char16_t character;
  char letter;
};
constexpr std::array kEscapes{Escape{u'"', '"'}, Escape{u'\\', '\\'}, Escape{u'\n', 'n'},
                              Escape{u'\r', 'r'}, Escape{u'\t', 't'}};

constexpr bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c < 0xDC00; }
constexpr bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c < 0xE000; }

char FindEscape(char16_t character) {
  for (const Escape& escape : kEscapes) {
    if (escape.character == character) return escape.letter;
  }
  return 0;
}

void AppendUtf8(std::string& bytes, char32_t c) {
  const auto tail = [&bytes, c](int shift) {
    bytes += static_cast<char>(0x80 | (c >> shift & 0x3F));
  };
  if (c < 0x80) {
    bytes += static_cast<char>(c);
  } else if (c < 0x800) {
    bytes += static_cast<char>(0xC0 | c >> 6);
    tail(0);
  } else if (c < 0x10000) {
    bytes += static_cast<char>(0xE0 | c >> 12);
    tail(6);
    tail(0);
  } else {
    bytes += static_cast<char>(0xF0 | c >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

void AppendUtf16(std::u16string& text, char32_t c) {
  if (c < 0x10000) {
    text += static_cast<char16_t>(c);
  } else {
    text += static_cast<char16_t>(0xD7C0 + (c >> 10));
    text += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
  }
}

/// Leading bytes of sequences of two, three and four bytes, and the least character of each.
struct Sequence {
  unsigned lead;
  unsigned lead_mask;
  char32_t least;
};
constexpr std::array kSequences{Sequence{0xC0, 0xE0, 0x80}, Sequence{0xE0, 0xF0, 0x800},
                                Sequence{0xF0, 0xF8, 0x10000}};
constexpr char32_t kLastCharacter = 0x10FFFF;

/// Takes one character off the front of `bytes`, which are not empty.
char32_t TakeUtf8(std::string_view& bytes) {
  const auto lead = static_cast<unsigned char>(bytes.front());
  bytes.remove_prefix(1);
  if (lead < 0x80) return lead;
  std::size_t tails = 1;
  for (const Sequence& sequence : kSequences) {
    if ((lead & sequence.lead_mask) == sequence.lead && bytes.size() >= tails) {
      char32_t c = lead & ~sequence.lead_mask;
      bool whole = true;
      for (const char tail : bytes.substr(0, tails)) {
        whole = whole && (tail & 0xC0) == 0x80;
        c = c << 6 | (static_cast<unsigned char>(tail) & 0x3F);
      }
      if (!whole || c < sequence.least || c > kLastCharacter) break;
      bytes.remove_prefix(tails);
      return c;
    }
    ++tails;
  }
  throw TextError(fmt::format("byte 0x{:02X} is no UTF-8 here", lead));
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
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (const char letter = FindEscape(text[i])) {
      quoted += '\\';
      quoted += letter;
      continue;
    }
    if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00U);
    }
    AppendUtf8(quoted, c);
  }
  return quoted + '"';
}

std::u16string Utf16(std::string_view bytes) {
  std::u16string text;
  while (!bytes.empty()) AppendUtf16(text, TakeUtf8(bytes));
  return text;
}

std::string Shown(std::string_view text) {
  std::string shown(text.substr(0, kMostShown));
  for (char& c : shown) {
    if (c < ' ' || c > '~') c = '?';
  }
  return text.size() > kMostShown ? shown + "..." : shown;
}

void Scanner::Expect(char character) {
  if (Take(character)) return;
  throw TextError(AtEnd() ? fmt::format("the line ends where '{}' belongs", character)
                          : fmt::format("'{}' belongs before \"{}\"", character, Shown(rest_)));
}

void Scanner::ExpectEnd() {
  if (!AtEnd()) throw TextError(fmt::format("\"{}\" does not belong here", Shown(rest_)));
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
    throw TextError(fmt::format("the number \"{}\" is too large", Shown(start)));
  }
  if (error != std::errc{} || (end != first + rest_.size() && IsWordCharacter(*end))) {
    throw TextError(start.empty() ? std::string("the line ends where an integer belongs")
                                  : fmt::format("\"{}\" is no integer (decimal, or hexadecimal "
                                                "after 0x)",
                                                Shown(start)));
  }
  rest_.remove_prefix(static_cast<std::size_t>(end - first));
  return negative ? -value : value;
}

std::int64_t Scanner::Integer(std::int64_t least, std::int64_t most, std::string_view what) {
  const std::int64_t value = Integer();
  if (value < least || value > most) {
    throw TextError(fmt::format("{} {} is not within {} to {}", what, value, least, most));
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
    char32_t c = TakeUtf8(rest_);
    if (c == U'"') return text;
    if (c == U'\\') {
      const char letter = rest_.empty() ? '\0' : rest_.front();
      c = 0;
      for (const Escape& escape : kEscapes) {
        if (escape.letter == letter) c = escape.character;
      }
      if (c == 0) {
        throw TextError(R"(a backslash in a text stands before ", \, n, r or t only)");
      }
      rest_.remove_prefix(1);
    }
    AppendUtf16(text, c);
  }
  throw TextError("the text has no closing quote");
}

}  // namespace fliglaf::record
