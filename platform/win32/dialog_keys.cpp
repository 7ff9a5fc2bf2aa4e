#include "platform/win32/dialog_keys.h"

#include <vector>

namespace fliglaf::platform {
namespace {

/// The dialogs, which all are of one thread, and the hook in its message loop while there are any.
struct Watched {
  std::vector<HWND> dialogs;
  HHOOK hook = nullptr;
};

Watched& TheWatched() {
  static Watched watched;
  return watched;
}

bool IsKey(const MSG& message) {
  return message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
}

/// A key that a dialog has taken must not be handled again by the host.
LRESULT CALLBACK OnMessageTaken(int code, WPARAM wide, LPARAM lng) {
  auto* const message = reinterpret_cast<MSG*>(lng);
  if (code == HC_ACTION && wide == PM_REMOVE && IsKey(*message)) {
    for (const HWND dialog : TheWatched().dialogs) {
      if (message->hwnd != dialog && !IsChild(dialog, message->hwnd)) continue;
      MSG copy = *message;
      if (IsDialogMessageW(dialog, &copy)) {
        message->message = WM_NULL;
        message->wParam = 0;
        message->lParam = 0;
      }
      break;  // the dialog may be gone, and the list with it
    }
  }
  return CallNextHookEx(nullptr, code, wide, lng);
}

}  // namespace

DialogKeys::DialogKeys(HWND dialog) : dialog_(dialog) {
  Watched& watched = TheWatched();
  if (watched.dialogs.empty()) {
    watched.hook = SetWindowsHookExW(WH_GETMESSAGE, OnMessageTaken, nullptr, GetCurrentThreadId());
  }
  watched.dialogs.push_back(dialog);
}

DialogKeys::~DialogKeys() {
  Watched& watched = TheWatched();
  std::erase(watched.dialogs, dialog_);
  if (watched.dialogs.empty()) UnhookWindowsHookEx(watched.hook);
}

}  // namespace fliglaf::platform
