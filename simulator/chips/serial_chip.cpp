#include "simulator/chips/serial_chip.h"

#include <algorithm>

namespace fliglaf::simulator {

void SerialChip::Power(bool on) {
  powered_ = on;
  powered_at_ = clock().now();
  in_step_ = false;
  driven_ = 0;
  Restart();
}

/// Called for every change of a line, most of them clock edges.
void SerialChip::Observe(Lines levels) {
  if ((levels & wiring_.enable_to_chip) != wiring_.enable_to_chip) {
    levels &= ~(wiring_.clock | wiring_.data_in);
  }
  const Lines changed = levels ^ seen_;
  seen_ = levels;
  if ((changed & framing_) != 0 && powered_) FramingMoved(levels, changed);
  if ((changed & wiring_.clock) == 0 || !in_step_) return;
  if ((levels & wiring_.clock) == 0) {
    port_.Fall();
    levels_ = port_.data_out() ? wiring_.data_out : 0;
  } else if (port_.Rise((levels & wiring_.data_in) != 0) && clock().now() >= listens_from_) {
    TakeByte(port_.received());
  }
}

std::vector<Signal> SerialChip::Signals() const {
  std::vector<Signal> signals{{"reset", wiring_.reset},
                              {"sck", wiring_.clock},
                              {"mosi", wiring_.data_in},
                              {"miso", wiring_.data_out}};
  if (wiring_.select != 0) signals.insert(signals.begin() + 1, {"cs", wiring_.select});
  return signals;
}

void SerialChip::FramingMoved(Lines levels, Lines changed) {
  if ((changed & wiring_.reset) != 0) ResetMoved(levels);
  if ((changed & wiring_.select) != 0) SelectMoved(levels);
  const bool answers = in_step_ && (levels & wiring_.enable_from_chip) == wiring_.enable_from_chip;
  driven_ = answers ? wiring_.data_out : 0;
  levels_ = port_.data_out() ? wiring_.data_out : 0;
}

void SerialChip::ResetMoved(Lines levels) {
  in_step_ = Listens(levels) && (levels & wiring_.clock) == 0;
  listens_from_ =
      std::max(clock().now() + start_up_.after_reset, powered_at_ + start_up_.after_power);
  port_.Reset();
  Restart();
}

void SerialChip::SelectMoved(Lines levels) {
  const bool released = in_step_ && !Listens(levels);
  in_step_ = Listens(levels) && (levels & wiring_.clock) == 0;
  port_.Reset();
  if (in_step_) Selected();
  if (released) Released();
}

}  // namespace fliglaf::simulator
