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

void Socket::AllOff() {
  vcc_on_.reset();
  gnd_on_.reset();
  supply_ = 0;
  Update();
}

void Socket::Update() {
  if (chip_ == nullptr) return;
  const auto all_on = [](const std::vector<std::uint8_t>& pins, const PinSet& on) {
    return std::ranges::all_of(pins, [&on](std::uint8_t pin) { return on[pin]; });
  };
  const std::int64_t percent = std::int64_t{supply_} * 100 / pins_.nominal_millivolts;
  const bool powered =
      percent >= 80 && percent <= 120 && all_on(pins_.vcc, vcc_on_) && all_on(pins_.gnd, gnd_on_);
  if (powered == powered_) return;
  powered_ = powered;
  chip_->Power(powered);
}

}  // namespace fliglaf::simulator
