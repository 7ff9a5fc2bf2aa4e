#pragma once

#include <chrono>
#include <cstdint>

#include "simulator/chip.h"
#include "simulator/clock.h"

namespace fliglaf::simulator {

/// A chip that takes its time: it is busy with a write or an erase that it does by itself.
class TimedChip : public Chip {
 protected:
  explicit TimedChip(const Clock& clock) : clock_(clock) {}

  [[nodiscard]] const Clock& clock() const { return clock_; }
  [[nodiscard]] bool busy() const { return clock_.now() < busy_until_; }
  void BusyFor(std::chrono::nanoseconds time) { busy_until_ = clock_.now() + time.count(); }

 private:
  const Clock& clock_;
  std::int64_t busy_until_ = 0;
};

}  // namespace fliglaf::simulator
