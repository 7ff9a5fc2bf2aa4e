// The desktop of the Windows build.
#pragma once

#include <windows.h>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/desktop.h"
#include "platform/form.h"
#include "platform/win32/message_font.h"

namespace fliglaf::platform {

/// Lives on one thread, the host's user-interface thread. Timers run on a message window of its
/// own, which is never shown.
class Win32Desktop : public Desktop {
 public:
  Win32Desktop() = default;
  ~Win32Desktop() override;

  /// Called when the program is asked to end during a turn of the message loop.
  std::function<void()> on_quit;
  /// Passes a request to end, which a turn took off the queue, on to the host's own message loop.
  void PassQuitOn();

  /// Kept alive as long as a window is open.
  std::function<std::shared_ptr<void>()> hold;

  /// The box belongs to the active window of the calling thread.
  int MsgBox(int style, std::u16string_view title, std::u16string_view prompt) override;
  /// A caller that turns the loop again at once is waiting for something: it sleeps for a
  /// millisecond when there is no message.
  void DoEvents() override;
  [[nodiscard]] std::u16string LoadText(std::int64_t number) override;
  [[nodiscard]] double SecondsSinceMidnight() override;
  void Show(Form& form) override;
  [[nodiscard]] Size TextSize(std::u16string_view text) override;

 private:
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wide, LPARAM lng);
  void NeedWindow();
  [[nodiscard]] const MessageFont& NeedFont();
  void OnTimer(Timer* timer) noexcept;
  void Handle(const MSG& message);
  void RestWhenCalledAgain();

  void StartTimer(Timer& timer) override;
  void StopTimer(Timer& timer) override;

  HWND window_ = nullptr;
  std::optional<MessageFont> font_;
  std::vector<Timer*> running_;
  std::optional<int> quit_;
  /// What a timer's handler threw; it cannot pass through the frames of Windows.
  std::exception_ptr thrown_;
  std::chrono::steady_clock::time_point last_idle_turn_{};
};

}  // namespace fliglaf::platform
