#pragma once

#include <chrono>
#include <cstdint>

namespace fliglaf::simulator {

/// Virtual time in nanoseconds from 0. It goes on only when something takes time; on request it is
/// kept from running ahead of the clock on the wall, or from falling behind it.
class Clock {
 public:
  static constexpr std::int64_t kMicrosecond = 1'000;
  static constexpr std::int64_t kMillisecond = 1'000'000;

  explicit Clock(bool real_time = false)
      : real_time_(real_time), started_(std::chrono::steady_clock::now()) {}

  [[nodiscard]] std::int64_t now() const { return now_; }
  [[nodiscard]] bool real_time() const { return real_time_; }

  /// Lets `nanoseconds` pass; a negative duration is none. Cheap: it is called for every half bit.
  void Advance(std::int64_t nanoseconds) {
    if (nanoseconds > 0) now_ += nanoseconds;
  }
  void AdvanceTo(std::int64_t time) { Advance(time - now_); }

  /// In real time: waits until the wall has caught up. Called where a call of the programmer
  /// returns.
  void CatchUp() const;

  /// Lets the time pass that has passed on the wall, unless that has been done already.
  void FollowWall();

 private:
  std::int64_t now_ = 0;
  bool real_time_;
  std::chrono::steady_clock::time_point started_;
};

}  // namespace fliglaf::simulator
