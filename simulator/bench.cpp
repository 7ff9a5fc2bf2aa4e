#include "simulator/bench.h"

#include <algorithm>
#include <stdexcept>

#include "simulator/chips/isp51_chip.h"

namespace fliglaf::simulator {
namespace {

/// In real time a wait is cut short, so that a stop request is noticed while it lasts.
constexpr std::int64_t kLongestRealWait = 20 * Clock::kMillisecond;

std::unique_ptr<Chip> MakeChip(const ChipDescription& description, const Clock& clock) {
  switch (description.family) {
    case 1:
      return std::make_unique<Isp51Chip>(
          clock, description.flash_bytes, description.signature,
          Isp51Timing{.byte_write = description.byte_write_us * Clock::kMicrosecond,
                      .chip_erase = description.erase_ms * Clock::kMillisecond,
                      .lock_write = description.lock_write_ms * Clock::kMillisecond});
    default:
      throw std::invalid_argument("there is no simulated chip of family " +
                                  std::to_string(description.family));
  }
}

}  // namespace

bool Bench::Supports(std::uint8_t family) { return family == 1; }

Bench::Bench(const ChipDescription& description, std::int16_t instance, const Faults& faults,
             bool real_time)
    : clock_(real_time),
      chip_(MakeChip(description, clock_)),
      socket_(faults.no_chip ? nullptr : chip_.get(), description.supply),
      programmer_(clock_, socket_, instance, faults.programmer) {
  if (faults.stuck_bit) chip_->Break(*faults.stuck_bit);
}

void Bench::WaitUntil(std::int64_t time) {
  clock_.AdvanceTo(clock_.real_time() ? std::min(time, clock_.now() + kLongestRealWait) : time);
  clock_.CatchUp();
  programmer_.Poll();
}

}  // namespace fliglaf::simulator
