// The desktop of the portable build: timers on a time source, boxes and turns handed to whoever
// runs the library (a test, the command line).
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "platform/desktop.h"
#include "platform/portable/time_source.h"

namespace fliglaf::platform {

class PortableDesktop : public Desktop {
 public:
  /// `seconds_at_start`: the time of day when the desktop is made.
  explicit PortableDesktop(TimeSource& time, double seconds_at_start = 0);

  /// Answers message boxes; without one the answer is that of the closing button: OK where it is
  /// the only one, else Cancel or Abort.
  std::function<int(int style, std::u16string_view title, std::u16string_view prompt)> on_box;
  /// Called first in every turn of the message loop: the other windows of the host, so to speak.
  /// True when it handled something; the turn is then over.
  std::function<bool()> on_turn;

  int MsgBox(int style, std::u16string_view title, std::u16string_view prompt) override;
  /// A turn in which nothing was handled waits for the next timer or transfer.
  void DoEvents() override;
  [[nodiscard]] std::u16string LoadText(std::int64_t number) override;
  [[nodiscard]] double SecondsSinceMidnight() override;

 private:
  struct Running {
    Timer* timer;
    std::int64_t due;
  };

  void StartTimer(Timer& timer) override;
  void StopTimer(Timer& timer) override;
  bool FireDueTimers();

  TimeSource& time_;
  std::int64_t start_;
  double seconds_at_start_;
  std::vector<Running> running_;
};

}  // namespace fliglaf::platform
