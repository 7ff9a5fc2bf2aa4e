#include "simulator/bench/bench.h"

#include "devices/kinds/device_kind.h"

namespace fliglaf::simulator {

Bench::Bench(const DeviceProfile& device, std::int16_t instance, const Faults& faults,
             bool real_time)
    : Bench([&device](const Clock& clock) { return KindOf(device).make_part(device, clock); },
            instance, faults, real_time) {}

Bench::Bench(const PartMaker& make_part, std::int16_t instance, const Faults& faults,
             bool real_time)
    : clock_(real_time),
      part_(make_part(clock_)),
      socket_(faults.no_chip ? nullptr : part_.chip.get(), part_.supply),
      programmer_(clock_, socket_, instance) {
  socket_.JoinInput(part_.joined_input);
  for (const StuckBit& stuck : faults.stuck_bits) part_.chip->Break(stuck);
  if (faults.answer_stuck) socket_.StickAnswer(*faults.answer_stuck);
  if (faults.programmer.empty()) return;
  faults_ = std::make_unique<PlannedFaults>(programmer_, programmer_, faults.programmer);
  io_ = faults_.get();
  time_ = faults_.get();
}

std::unique_ptr<JtagCable> Bench::AttachJtagCable() {
  if (part_.jtag == nullptr) return nullptr;
  return std::make_unique<JtagCable>(clock_, socket_, *part_.jtag);
}

}  // namespace fliglaf::simulator
