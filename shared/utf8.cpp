#include "shared/utf8.h"

#include <array>

namespace fliglaf {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLastCharacter = 0x10FFFF;

/// Leading bytes of sequences of two, three and four bytes, and the least character of each.
struct Sequence {
  unsigned lead;
  unsigned lead_mask;
  char32_t least;
};
constexpr std::array kSequences{Sequence{0xC0, 0xE0, 0x80}, Sequence{0xE0, 0xF0, 0x800},
                                Sequence{0xF0, 0xF8, 0x10000}};

constexpr bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c < 0xDC00; }
constexpr bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c < 0xE000; }
constexpr bool IsSurrogate(char32_t c) { return c >= 0xD800 && c < 0xE000; }

/// Control characters, and the marks, embeddings, overrides and isolates of bidirectional text.
constexpr bool IsControl(char32_t c) {
  return c < ' ' || (c >= 0x7F && c < 0xA0) || c == 0x61C || c == 0x200E || c == 0x200F ||
         (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
}

char32_t TakeShown(std::string_view& bytes) {
  const char32_t c = TakeUtf8(bytes).value_or(kReplacement);
  return IsSurrogate(c) ? kReplacement : c;
}

}  // namespace

void AppendUtf8(std::string& bytes, char32_t character) {
  const auto tail = [&bytes, character](int shift) {
    bytes += static_cast<char>(0x80 | (character >> shift & 0x3F));
  };
  if (character < 0x80) {
    bytes += static_cast<char>(character);
  } else if (character < 0x800) {
    bytes += static_cast<char>(0xC0 | character >> 6);
    tail(0);
  } else if (character < 0x10000) {
    bytes += static_cast<char>(0xE0 | character >> 12);
    tail(6);
    tail(0);
  } else {
    bytes += static_cast<char>(0xF0 | character >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

std::optional<char32_t> TakeUtf8(std::string_view& bytes) {
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
      if (!whole || c < sequence.least || c > kLastCharacter) return std::nullopt;
      bytes.remove_prefix(tails);
      return c;
    }
    ++tails;
  }
  return std::nullopt;
}

char32_t TakeUtf16(std::u16string_view& units) {
  const char32_t c = units[0];
  const bool pair = IsHighSurrogate(c) && units.size() > 1 && IsLowSurrogate(units[1]);
  const char32_t character = pair ? 0x10000 + ((c - 0xD800) << 10) + (units[1] - 0xDC00U) : c;
  units.remove_prefix(pair ? 2 : 1);
  return character;
}

std::string ToUtf8(std::u16string_view text) {
  std::string utf8;
  while (!text.empty()) {
    const char32_t c = TakeUtf16(text);
    AppendUtf8(utf8, IsSurrogate(c) ? kReplacement : c);
  }
  return utf8;
}

std::string Printable(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const char32_t c = TakeShown(text);
    const bool kept = c == '\n' || c == '\t' || !IsControl(c);
    AppendUtf8(shown, kept ? c : kReplacement);
  }
  return shown;
}

std::string Excerpt(std::string_view text, std::size_t most) {
  std::string shown;
  for (; !text.empty(); --most) {
    if (most == 0) return shown + "...";
    const char32_t c = TakeShown(text);
    AppendUtf8(shown, IsControl(c) ? kReplacement : c);
  }
  return shown;
}

}  // namespace fliglaf
