#include "platform/win32/win32_desktop.h"

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

#include "platform/win32/form_window.h"
#include "platform/win32/module.h"

namespace fliglaf::platform {
namespace {

constexpr wchar_t kWindowClass[] = L"fliglaf.desktop";

/// A window that posts to itself without end must not hold up the run.
constexpr int kMostMessagesInATurn = 1'000;

/// Turns that follow each other faster than this are a wait.
constexpr std::chrono::milliseconds kWaitingPace{1};
constexpr DWORD kRestMs = 1;

[[noreturn]] void ThrowLastError(const char* what) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

const wchar_t* Native(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

/// What the closing button of a box would have answered.
int ClosingAnswer(int style) {
  switch (static_cast<UINT>(style) & MB_TYPEMASK) {
    case MB_OKCANCEL:
      return box_answer::kCancel;
    case MB_ABORTRETRYIGNORE:
      return box_answer::kAbort;
    default:
      return box_answer::kOk;
  }
}

}  // namespace

/// Made with the first timer: most objects never need it, and it costs most of making one.
void Win32Desktop::NeedWindow() {
  if (window_ != nullptr) return;
  WNDCLASSEXW window_class = {};
  window_class.cbSize = sizeof window_class;
  window_class.lpfnWndProc = OnMessage;
  window_class.hInstance = ThisModule();
  window_class.lpszClassName = kWindowClass;
  if (RegisterClassExW(&window_class) == 0 && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
    ThrowLastError("the window class of the timers");
  }
  window_ = CreateWindowExW(0, kWindowClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                            ThisModule(), nullptr);
  if (window_ == nullptr) ThrowLastError("the window of the timers");
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

Win32Desktop::~Win32Desktop() {
  if (window_ == nullptr) return;
  DestroyWindow(window_);
  UnregisterClassW(kWindowClass, ThisModule());  // it names code that may be unloaded next
}

void Win32Desktop::PassQuitOn() {
  if (const auto quit = std::exchange(quit_, std::nullopt)) PostQuitMessage(*quit);
}

int Win32Desktop::MsgBox(int style, std::u16string_view title, std::u16string_view prompt) {
  const int answer = MessageBoxW(GetActiveWindow(), Native(std::u16string(prompt)),
                                 Native(std::u16string(title)), static_cast<UINT>(style));
  return answer == 0 ? ClosingAnswer(style) : answer;
}

void Win32Desktop::DoEvents() {
  int handled = 0;
  MSG message = {};
  while (handled < kMostMessagesInATurn && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    ++handled;
    Handle(message);
  }
  if (handled == 0) RestWhenCalledAgain();
}

void Win32Desktop::Handle(const MSG& message) {
  if (message.message == WM_QUIT) {
    quit_ = static_cast<int>(message.wParam);
    if (on_quit) on_quit();
    return;
  }
  TranslateMessage(&message);
  DispatchMessageW(&message);
  if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
}

void Win32Desktop::RestWhenCalledAgain() {
  const auto now = std::chrono::steady_clock::now();
  if (now - last_idle_turn_ < kWaitingPace) {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, kRestMs, QS_ALLINPUT);
  }
  last_idle_turn_ = std::chrono::steady_clock::now();
}

std::u16string Win32Desktop::LoadText(std::int64_t number) {
  if (!std::in_range<std::uint16_t>(number)) return {};
  // With a length of 0 the call hands out the text where it lies in the resource.
  const wchar_t* text = nullptr;
  const int length =
      LoadStringW(ThisModule(), static_cast<UINT>(number), reinterpret_cast<LPWSTR>(&text), 0);
  return {text, text + std::max(length, 0)};
}

double Win32Desktop::SecondsSinceMidnight() {
  SYSTEMTIME now = {};
  GetLocalTime(&now);
  return now.wHour * 3600 + now.wMinute * 60 + now.wSecond + now.wMilliseconds / 1000.0;
}

const MessageFont& Win32Desktop::NeedFont() {
  if (!font_) font_.emplace();
  return *font_;
}

Size Win32Desktop::TextSize(std::u16string_view text) { return NeedFont().TextSize(text); }

void Win32Desktop::Show(Form& form) {
  if (!form.view) {
    form.view = std::make_unique<FormWindow>(form, NeedFont(), hold ? hold() : nullptr);
  }
  static_cast<FormWindow&>(*form.view).Show();
}

void Win32Desktop::StartTimer(Timer& timer) {
  NeedWindow();
  // The timer's address is its number: setting it again starts the interval over.
  if (SetTimer(window_, reinterpret_cast<UINT_PTR>(&timer), static_cast<UINT>(timer.interval_ms()),
               nullptr) == 0) {
    ThrowLastError("a timer");
  }
  if (std::ranges::find(running_, &timer) == running_.end()) running_.push_back(&timer);
}

void Win32Desktop::StopTimer(Timer& timer) {
  KillTimer(window_, reinterpret_cast<UINT_PTR>(&timer));
  std::erase(running_, &timer);
}

void Win32Desktop::OnTimer(Timer* timer) noexcept {
  if (std::ranges::find(running_, timer) == running_.end()) return;
  try {
    timer->Tick();
  } catch (...) {
    thrown_ = std::current_exception();
  }
}

LRESULT CALLBACK Win32Desktop::OnMessage(HWND window, UINT message, WPARAM wide, LPARAM lng) {
  auto* const desktop = reinterpret_cast<Win32Desktop*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (message != WM_TIMER || desktop == nullptr) return DefWindowProcW(window, message, wide, lng);
  desktop->OnTimer(reinterpret_cast<Timer*>(wide));
  return 0;
}

}  // namespace fliglaf::platform
