#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "devices/device_profile.h"
#include "platform/portable/time_source.h"
#include "simulator/chip.h"
#include "simulator/clock.h"
#include "simulator/faulty_programmer.h"
#include "simulator/jtag_cable.h"
#include "simulator/part.h"
#include "simulator/simulated_programmer.h"
#include "simulator/socket.h"

namespace fliglaf::simulator {

/// What is to go wrong.
struct Faults {
  FaultPlan programmer = {};
  bool no_chip = false;
  std::vector<StuckBit> stuck_bits = {};
  std::optional<bool> answer_stuck = std::nullopt;  ///< the line on which the chip answers
};

/// A simulated bench: a programmer on USB, a socket, a chip in it, and the time that all of them
/// share.
class Bench : public platform::TimeSource {
 public:
  /// Makes the part for the bench's time.
  using PartMaker = std::function<Part(const Clock&)>;

  /// `instance`: see SimulatedProgrammer. In real time every call takes as long as it would on the
  /// bench.
  Bench(const DeviceProfile& device, std::int16_t instance, const Faults& faults,
        bool real_time = false);
  Bench(const PartMaker& make_part, std::int16_t instance, const Faults& faults,
        bool real_time = false);

  [[nodiscard]] SimulatedProgrammer& programmer() { return programmer_; }
  /// The programmer as a host meets it, behind its faults.
  [[nodiscard]] Programmer& io() { return *io_; }
  /// Null for a programmer that has none.
  [[nodiscard]] const PlannedFaults* faults() const { return faults_.get(); }
  [[nodiscard]] Chip& chip() { return *part_.chip; }
  [[nodiscard]] const Clock& clock() const { return clock_; }
  /// True when a chip may be taken out of the socket.
  [[nodiscard]] bool socket_is_off() const { return socket_.off(); }
  /// Has `watch` see the socket as it is now, and every change from now on.
  void Watch(SocketWatch& watch) { programmer_.Watch(watch); }
  /// Takes the programmer off the chip and puts a cable in its place; null for a chip that has no
  /// JTAG lines. The bench outlives it.
  [[nodiscard]] std::unique_ptr<JtagCable> AttachJtagCable();

  [[nodiscard]] std::int64_t Now() const override { return clock_.now(); }
  [[nodiscard]] std::optional<std::int64_t> NextEvent() const override {
    return time_->NextEvent();
  }
  void WaitUntil(std::int64_t time) override { time_->WaitUntil(time); }

 private:
  Clock clock_;
  Part part_;
  Socket socket_;
  SimulatedProgrammer programmer_;
  std::unique_ptr<PlannedFaults> faults_;
  Programmer* io_ = &programmer_;
  platform::TimeSource* time_ = &programmer_;
};

}  // namespace fliglaf::simulator
