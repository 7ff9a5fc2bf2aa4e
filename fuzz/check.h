// Checks of the fuzz targets: to libFuzzer, one that fails is a crash.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace fliglaf::fuzz {

inline void Require(bool holds, std::string_view what) {
  if (holds) return;
  std::cerr << "does not hold: " << what << "\n";
  std::abort();
}

/// A message is one line that a terminal can show.
inline void RequireOneLine(std::string_view message) {
  Require(std::ranges::none_of(
              message, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }),
          message);
}

/// A message about the text of the file "f" begins with "f:LINE: ", and the text has that line.
inline void RequirePlace(std::string_view message, std::string_view text) {
  RequireOneLine(message);
  Require(message.starts_with("f:"), message);
  const char* const end = message.data() + message.size();
  std::int64_t line = 0;
  const auto number = std::from_chars(message.data() + 2, end, line);
  Require(std::string_view(number.ptr, end).starts_with(": "), message);
  Require(line >= 1 && line <= 1 + std::ranges::count(text, '\n'), message);
}

}  // namespace fliglaf::fuzz
