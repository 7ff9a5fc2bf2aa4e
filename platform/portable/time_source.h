// Where the portable desktop takes its time from: the simulated bench, or the clock of the machine.
#pragma once

#include <cstdint>
#include <optional>

namespace fliglaf::platform {

class TimeSource {
 public:
  TimeSource() = default;
  virtual ~TimeSource() = default;
  TimeSource(const TimeSource&) = delete;
  TimeSource& operator=(const TimeSource&) = delete;

  /// Nanoseconds since an arbitrary start; never goes back.
  [[nodiscard]] virtual std::int64_t Now() const = 0;
  /// When something that runs beside the library (a transfer) will next have news.
  [[nodiscard]] virtual std::optional<std::int64_t> NextEvent() const = 0;
  /// Waits until `time`, or less long when the wait was interrupted.
  virtual void WaitUntil(std::int64_t time) = 0;
};

/// Time that stands still, for a desktop on which nothing waits.
class StandingTime : public TimeSource {
 public:
  [[nodiscard]] std::int64_t Now() const override { return 0; }
  [[nodiscard]] std::optional<std::int64_t> NextEvent() const override { return {}; }
  void WaitUntil(std::int64_t /*time*/) override {}
};

}  // namespace fliglaf::platform
