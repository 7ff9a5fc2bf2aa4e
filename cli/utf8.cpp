#include "cli/utf8.h"

#include <cstdint>

namespace fliglaf::cli {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

void AppendContinuation(std::string& text, char32_t bits) {
  text += static_cast<char>(0x80 | (bits & 0x3F));
}

void Append(std::string& text, char32_t code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | code >> 6);
    AppendContinuation(text, code);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0 | code >> 12);
    AppendContinuation(text, code >> 6);
    AppendContinuation(text, code);
  } else {
    text += static_cast<char>(0xF0 | code >> 18);
    AppendContinuation(text, code >> 12);
    AppendContinuation(text, code >> 6);
    AppendContinuation(text, code);
  }
}

}  // namespace

std::string ToUtf8(std::u16string_view text) {
  std::string utf8;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t code = text[i];
    if (IsHighSurrogate(code) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      ++i;
      code = 0x10000 + ((code - 0xD800) << 10) + (char32_t{text[i]} - 0xDC00);
    } else if (IsHighSurrogate(code) || IsLowSurrogate(code)) {
      code = kReplacement;
    }
    Append(utf8, code);
  }
  return utf8;
}

}  // namespace fliglaf::cli
