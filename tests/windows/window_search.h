// Finding windows and reading what they show.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace fliglaf::test {

inline void Pump() {
  MSG message = {};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

inline std::wstring TextOf(HWND window) {
  std::wstring text(256, L'\0');
  text.resize(static_cast<std::size_t>(
      SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
  return text;
}

/// Without the mark of the access key.
inline std::wstring CaptionOf(HWND window) {
  std::wstring caption = TextOf(window);
  std::erase(caption, L'&');
  return caption;
}

inline std::wstring ClassOf(HWND window) {
  std::wstring name(32, L'\0');
  name.resize(static_cast<std::size_t>(GetClassNameW(window, name.data(), 32)));
  return name;
}

inline BOOL CALLBACK TakeDialog(HWND window, LPARAM found) {
  if (ClassOf(window) != L"#32770" || !IsWindowVisible(window)) return TRUE;
  *reinterpret_cast<HWND*>(found) = window;
  return FALSE;
}

inline BOOL CALLBACK TakeControls(HWND control, LPARAM controls) {
  if (ClassOf(control) != L"#32770" && IsWindowVisible(control)) {
    reinterpret_cast<std::vector<HWND>*>(controls)->push_back(control);
  }
  return TRUE;
}

}  // namespace fliglaf::test
