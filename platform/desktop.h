// What the library asks of the desktop it runs on: message boxes, windows, one turn of the message
// loop, timers, the texts of its own string table, and the time of day.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace fliglaf::platform {

/// Styles of a message box: buttons plus icon, numbered as Windows numbers them.
namespace box_style {
inline constexpr int kOkOnly = 0;
inline constexpr int kQuestionOkCancel = 33;
inline constexpr int kWarningAbortRetryIgnore = 50;
inline constexpr int kInformationOk = 64;
}  // namespace box_style

/// The button that closed a message box, numbered as Windows numbers them.
namespace box_answer {
inline constexpr int kOk = 1;
inline constexpr int kCancel = 2;
inline constexpr int kAbort = 3;
inline constexpr int kRetry = 4;
inline constexpr int kIgnore = 5;
}  // namespace box_answer

class Desktop;
struct Form;
struct Size;

/// A window's timer. It ticks during message-loop turns, every `interval` ms while it is enabled;
/// a timer without an interval never ticks.
class Timer {
 public:
  Timer(Desktop& desktop, std::string_view name, std::function<void()> on_tick)
      : desktop_(desktop), name_(name), on_tick_(std::move(on_tick)) {}
  ~Timer() { Disable(); }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  /// Starts the timer, or starts it over. `interval_ms` above 0.
  void Enable(int interval_ms);
  void Disable();
  [[nodiscard]] bool enabled() const { return enabled_; }
  [[nodiscard]] int interval_ms() const { return interval_ms_; }
  [[nodiscard]] std::string_view name() const { return name_; }
  /// How often it has ticked.
  [[nodiscard]] unsigned ticks() const { return ticks_; }

  /// Called by the desktop when the interval has passed.
  void Tick() {
    ++ticks_;
    on_tick_();
  }

 private:
  Desktop& desktop_;
  std::string_view name_;
  std::function<void()> on_tick_;
  int interval_ms_ = 0;
  bool enabled_ = false;
  unsigned ticks_ = 0;
};

class Desktop {
 public:
  Desktop() = default;
  virtual ~Desktop() = default;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  /// Shows a message box and waits for the user; the result is one of `box_answer`.
  virtual int MsgBox(int style, std::u16string_view title, std::u16string_view prompt) = 0;

  /// One turn of the message loop: handles every message that is waiting, timers included.
  virtual void DoEvents() = 0;

  /// The text with that number in the library's own string table; empty for an unknown number.
  [[nodiscard]] virtual std::u16string LoadText(std::int64_t number) = 0;

  /// The local time of day in seconds with fractions, 0 to below 86,400.
  [[nodiscard]] virtual double SecondsSinceMidnight() = 0;

  /// Shows a loaded form as a window without owner, and returns; one that is shown already comes to
  /// the front as it now is. The form is unloaded before it goes. Here it stays in memory.
  virtual void Show(Form& form) { static_cast<void>(form); }

  /// What a line of text takes on a form. Here as on a plain screen, with characters of one width
  /// and ideographs of two.
  [[nodiscard]] virtual Size TextSize(std::u16string_view text);

 protected:
  friend class Timer;
  /// The timer has been enabled, or its interval starts over.
  virtual void StartTimer(Timer& timer) = 0;
  virtual void StopTimer(Timer& timer) = 0;
};

inline void Timer::Enable(int interval_ms) {
  interval_ms_ = interval_ms;
  enabled_ = true;
  desktop_.StartTimer(*this);
}

inline void Timer::Disable() {
  if (!enabled_) return;
  enabled_ = false;
  desktop_.StopTimer(*this);
}

}  // namespace fliglaf::platform
