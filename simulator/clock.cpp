#include "simulator/clock.h"

#include <thread>

namespace fliglaf::simulator {

void Clock::CatchUp() const {
  if (real_time_) std::this_thread::sleep_until(started_ + std::chrono::nanoseconds(now_));
}

void Clock::FollowWall() {
  AdvanceTo(std::chrono::nanoseconds(std::chrono::steady_clock::now() - started_).count());
}

}  // namespace fliglaf::simulator
