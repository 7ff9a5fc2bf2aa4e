#include "platform/portable/portable_desktop.h"

#include <algorithm>
#include <cmath>

#include "resources/string_table.h"

namespace fliglaf::platform {
namespace {

constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr double kSecondsPerDay = 86'400;

int ClosingAnswer(int style) {
  switch (style) {
    case box_style::kQuestionOkCancel:
      return box_answer::kCancel;
    case box_style::kWarningAbortRetryIgnore:
      return box_answer::kAbort;
    default:
      return box_answer::kOk;
  }
}

}  // namespace

PortableDesktop::PortableDesktop(TimeSource& time, double seconds_at_start)
    : time_(time), start_(time.Now()), seconds_at_start_(seconds_at_start) {}

int PortableDesktop::MsgBox(int style, std::u16string_view title, std::u16string_view prompt) {
  return on_box ? on_box(style, title, prompt) : ClosingAnswer(style);
}

void PortableDesktop::DoEvents() {
  const bool handled = on_turn && on_turn();
  if (FireDueTimers() || handled) return;

  std::optional<std::int64_t> next = time_.NextEvent();
  for (const Running& running : running_) {
    next = std::min(next.value_or(running.due), running.due);
  }
  if (!next) return;
  time_.WaitUntil(*next);
  FireDueTimers();
}

std::u16string PortableDesktop::LoadText(std::int64_t number) {
  return std::u16string(resources::FindText(number));
}

double PortableDesktop::SecondsSinceMidnight() {
  const double elapsed = static_cast<double>(time_.Now() - start_) / 1e9;
  return std::fmod(seconds_at_start_ + elapsed, kSecondsPerDay);
}

void PortableDesktop::StartTimer(Timer& timer) {
  StopTimer(timer);
  running_.push_back({&timer, time_.Now() + timer.interval_ms() * kNanosecondsPerMillisecond});
}

void PortableDesktop::StopTimer(Timer& timer) {
  std::erase_if(running_, [&timer](const Running& running) { return running.timer == &timer; });
}

bool PortableDesktop::FireDueTimers() {
  const std::int64_t now = time_.Now();
  std::vector<Timer*> due;  // a handler may start and stop timers
  for (Running& running : running_) {
    if (running.due > now) continue;
    running.due = now + running.timer->interval_ms() * kNanosecondsPerMillisecond;
    due.push_back(running.timer);
  }
  for (Timer* timer : due) {
    const auto still_running = std::ranges::find(running_, timer, &Running::timer);
    if (still_running != running_.end()) timer->Tick();
  }
  return !due.empty();
}

}  // namespace fliglaf::platform
