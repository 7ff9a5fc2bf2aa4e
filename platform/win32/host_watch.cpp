#include "platform/win32/host_watch.h"

#include <windows.h>

#include <array>
#include <string>
#include <system_error>
#include <utility>

#include "platform/desktop.h"
#include "platform/win32/window_text.h"

namespace fliglaf::platform {
namespace {

constexpr UINT kTurnMs = 16;

/// How Windows makes a message box: a dialog with its text in the control 0xFFFF.
constexpr wchar_t kDialogClass[] = L"#32770";
constexpr int kPromptControl = 0xFFFF;

HostWatch*& WatchOfThread() {
  thread_local HostWatch* watch = nullptr;
  return watch;
}

bool IsMessageBox(HWND window) {
  std::array<wchar_t, 16> name{};
  GetClassNameW(window, name.data(), static_cast<int>(name.size()));
  return std::wstring_view(name.data()) == kDialogClass &&
         GetDlgItem(window, kPromptControl) != nullptr;
}

/// The style that the box was shown with, by its buttons.
int StyleOf(HWND box) {
  if (GetDlgItem(box, IDABORT) != nullptr) return box_style::kWarningAbortRetryIgnore;
  return GetDlgItem(box, IDCANCEL) != nullptr && GetDlgItem(box, IDOK) != nullptr
             ? box_style::kQuestionOkCancel
             : box_style::kOkOnly;
}

/// Answers a box as it is about to appear.
LRESULT CALLBACK OnWindowEvent(int event, WPARAM wide, LPARAM lng) {
  const auto window = reinterpret_cast<HWND>(wide);  // NOLINT: how Windows passes it
  const HostWatch* const watch = WatchOfThread();
  if (event == HCBT_ACTIVATE && watch != nullptr && IsMessageBox(window)) {
    const int answer =
        watch->Answer(StyleOf(window), TextOf(window), TextOf(GetDlgItem(window, kPromptControl)));
    EndDialog(window, answer);
  }
  return CallNextHookEx(nullptr, event, wide, lng);
}

void CALLBACK OnTurn(HWND /*window*/, UINT /*message*/, UINT_PTR /*timer*/, DWORD /*time*/) {
  if (const HostWatch* const watch = WatchOfThread()) watch->Turn();
}

[[noreturn]] void ThrowLastError(const char* what) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

}  // namespace

HostWatch::HostWatch(std::function<void()> on_turn, OnBox on_box)
    : on_turn_(std::move(on_turn)), on_box_(std::move(on_box)) {
  hook_ = SetWindowsHookExW(WH_CBT, OnWindowEvent, nullptr, GetCurrentThreadId());
  if (hook_ == nullptr) ThrowLastError("the watch for message boxes");
  timer_ = SetTimer(nullptr, 0, kTurnMs, OnTurn);
  if (timer_ == 0) {
    UnhookWindowsHookEx(static_cast<HHOOK>(hook_));
    ThrowLastError("the timer of the turns");
  }
  WatchOfThread() = this;
}

HostWatch::~HostWatch() {
  WatchOfThread() = nullptr;
  KillTimer(nullptr, timer_);
  UnhookWindowsHookEx(static_cast<HHOOK>(hook_));
}

}  // namespace fliglaf::platform
