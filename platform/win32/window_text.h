#pragma once

#include <windows.h>

#include <cstddef>
#include <string>

namespace fliglaf::platform {

/// What stands in a window or a control of this process.
[[nodiscard]] inline std::u16string TextOf(HWND window) {
  std::u16string text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, u'\0');
  const int length =
      GetWindowTextW(window, reinterpret_cast<LPWSTR>(text.data()), static_cast<int>(text.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

}  // namespace fliglaf::platform
