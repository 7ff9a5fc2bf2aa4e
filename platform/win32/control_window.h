// Which control of Windows stands for one of a form.
#pragma once

#include <windows.h>

#include "platform/form.h"

namespace fliglaf::platform {

struct WindowKind {
  const wchar_t* window_class;
  DWORD style;
  DWORD extended_style;
};

[[nodiscard]] WindowKind KindOf(const Control& control);

[[nodiscard]] inline bool IsButton(const Control& control) {
  return control.kind == Control::Kind::kButton;
}

/// Gives a closed list the height that it is to have, in pixels.
void SetClosedHeight(HWND list, LONG height);

}  // namespace fliglaf::platform
