#include "platform/win32/dialog_keys.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace fliglaf::platform {
namespace {

/// Bit 30 of a key message: the key was down before it.
constexpr LPARAM kWasDown = LPARAM{1} << 30;
constexpr DWORD kInLoopOfItsOwn =
    GUI_INMENUMODE | GUI_SYSTEMMENUMODE | GUI_POPUPMENUMODE | GUI_INMOVESIZE;

/// The dialogs, which all are of one thread, and the hook in its message loop while there are any.
struct Watched {
  std::vector<HWND> dialogs;
  HHOOK hook = nullptr;
  /// The control that was last sent the press of a key, by the key's code.
  std::array<HWND, 256> pressed_in = {};
};

Watched& TheWatched() {
  static Watched watched;
  return watched;
}

bool IsKey(const MSG& message) {
  return message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
}

/// A menu, and a window that is being moved by keyboard, read the keys in a loop of their own.
bool InLoopOfItsOwn() {
  GUITHREADINFO info = {};
  info.cbSize = sizeof info;
  return GetGUIThreadInfo(GetCurrentThreadId(), &info) && (info.flags & kInLoopOfItsOwn) != 0;
}

bool IsOf(HWND dialog, HWND window) { return window == dialog || IsChild(dialog, window); }

/// The dialog that a window is, or stands in; null for a window of the host.
HWND DialogOf(HWND window) {
  const auto& dialogs = TheWatched().dialogs;
  const auto found =
      std::ranges::find_if(dialogs, [window](HWND dialog) { return IsOf(dialog, window); });
  return found == dialogs.end() ? nullptr : *found;
}

/// Whether a key was pressed for the window that the message is for. The Enter that made the host
/// open a dialog is still down then: neither its repeats nor its release are meant for the control
/// that now has the focus.
bool PressedHere(const MSG& message, HWND dialog) {
  if (message.wParam >= TheWatched().pressed_in.size()) return true;
  HWND& pressed_in = TheWatched().pressed_in[message.wParam];
  switch (message.message) {
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
      if ((message.lParam & kWasDown) != 0 && !IsOf(dialog, pressed_in)) return false;
      pressed_in = message.hwnd;
      return true;
    case WM_KEYUP:
    case WM_SYSKEYUP:
      return std::exchange(pressed_in, nullptr) == message.hwnd;
    default:
      return true;
  }
}

/// Whether the message is a key that a dialog has taken, or that nobody is to get.
bool IsTaken(MSG message) {
  const HWND dialog = DialogOf(message.hwnd);
  const bool pressed_here = PressedHere(message, dialog);
  if (dialog == nullptr) return false;
  return !pressed_here || IsDialogMessageW(dialog, &message);  // which may destroy the dialog
}

/// A key that a dialog has taken must not be handled again by the host.
LRESULT CALLBACK OnMessageTaken(int code, WPARAM wide, LPARAM lng) {
  auto* const message = reinterpret_cast<MSG*>(lng);
  const bool key = code == HC_ACTION && wide == PM_REMOVE && IsKey(*message);
  if (key && !InLoopOfItsOwn() && IsTaken(*message)) {
    message->message = WM_NULL;
    message->wParam = 0;
    message->lParam = 0;
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
  if (!watched.dialogs.empty()) return;
  UnhookWindowsHookEx(watched.hook);
  watched = {};
}

}  // namespace fliglaf::platform
