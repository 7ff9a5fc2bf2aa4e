// Tab, Enter, Esc, the arrows and access keys in a modeless dialog. Its messages come through the
// loop of the host, which knows nothing of dialogs.
#pragma once

#include <windows.h>

namespace fliglaf::platform {

/// While it lives, the keys of a dialog of this thread are handled as in any dialog.
class DialogKeys {
 public:
  explicit DialogKeys(HWND dialog);
  ~DialogKeys();
  DialogKeys(const DialogKeys&) = delete;
  DialogKeys& operator=(const DialogKeys&) = delete;

 private:
  HWND dialog_;
};

}  // namespace fliglaf::platform
