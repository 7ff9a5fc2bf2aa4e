// A dialog without controls: they are put on it afterwards.
#pragma once

#include <windows.h>

#include "platform/win32/module.h"
#include "platform/win32/system_error.h"

namespace fliglaf::platform {

/// Throws std::system_error when Windows creates none.
[[nodiscard]] inline HWND CreateEmptyDialog(DWORD style, DWORD extended_style, HWND parent,
                                            DLGPROC on_message) {
  struct {
    DLGTEMPLATE dialog = {};
    WORD menu = 0;
    WORD window_class = 0;
    WORD title = 0;
  } empty;
  empty.dialog.style = style;
  empty.dialog.dwExtendedStyle = extended_style;
  const HWND dialog =
      CreateDialogIndirectParamW(ThisModule(), &empty.dialog, parent, on_message, 0);
  if (dialog == nullptr) ThrowLastError();
  return dialog;
}

}  // namespace fliglaf::platform
