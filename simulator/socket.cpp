#include "simulator/socket.h"

#include <algorithm>

namespace fliglaf::simulator {

void Socket::SetSupply(std::int32_t millivolts) {
  supply_ = millivolts;
  Update();
}

void Socket::SetVccPin(std::uint8_t pin, bool on) {
  vcc_on_[pin] = on;
  Update();
}

void Socket::SetGndPin(std::uint8_t pin, bool on) {
  gnd_on_[pin] = on;
  Update();
}

void Socket::SetVppPin(std::uint8_t pin, bool on) {
  vpp_on_[pin] = on;
  Update();
}

void Socket::AllOff() {
  vcc_on_.reset();
  gnd_on_.reset();
  vpp_on_.reset();
  supply_ = 0;
  Update();
}

void Socket::PowerUp() {
  for (const std::uint8_t pin : pins_.vcc) vcc_on_.set(pin);
  for (const std::uint8_t pin : pins_.gnd) gnd_on_.set(pin);
  SetSupply(pins_.nominal_millivolts);
}

void Socket::Update() {
  const auto all_on = [](const std::vector<std::uint8_t>& pins, const PinSet& on) {
    return std::ranges::all_of(pins, [&on](std::uint8_t pin) { return on[pin]; });
  };
  supplied_ = supply_ > 0 && all_on(pins_.vcc, vcc_on_) && all_on(pins_.gnd, gnd_on_);
  const std::int64_t percent = std::int64_t{supply_} * 100 / pins_.nominal_millivolts;
  const bool powered = supplied_ && percent >= 80 && percent <= 120;
  if (chip_ != nullptr && powered != powered_) {
    powered_ = powered;
    chip_->Power(powered);
  }
  const bool vpp = !pins_.vpp.empty() && all_on(pins_.vpp, vpp_on_);
  if (chip_ != nullptr && vpp != vpp_at_chip_) {
    vpp_at_chip_ = vpp;
    chip_->ProgrammingVoltage(vpp);
  }
  if (watch_ != nullptr) ShowWatch();
}

void Socket::ShowLines(Lines driven, Lines released) {
  driven_ = driven;
  released_ = released;
  ShowWatch();
}

/// A line that the programmer drives has its level, whatever the chip does, but for one to which an
/// adapter joins its input.
void Socket::ShowWatch() {
  const bool answers = chip_ != nullptr && powered_;
  const Lines answer = answers ? chip_->driven() & chip_->levels() : 0;
  const Lines stuck = answer_stuck_.value_or(false) ? ~Lines{0} : 0;
  const Lines read = (released_ | joined_input_) & (answer_stuck_ ? stuck : answer);
  watch_->Show((((driven_ & ~joined_input_) | read) & kPortLines) | (supplied_ ? kVcc : 0) |
               (vpp_on_.any() ? kVpp : 0));
}

}  // namespace fliglaf::simulator
