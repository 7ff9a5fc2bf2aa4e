#include "simulator/chips/jtag_chip.h"

namespace fliglaf::simulator {
namespace {

constexpr int kBitsOfAByte = 8;

}  // namespace

void JtagChip::Power(bool on) {
  powered_ = on;
  driven_ = 0;
  Restart();
  EnterReset();
}

/// Called for every change of a line, most of them clock edges.
void JtagChip::Observe(Lines levels) {
  if ((levels & wiring_.routing) != wiring_.joined) {
    levels &= ~wiring_.tck;
    driven_ = 0;
  }
  const Lines changed = levels ^ seen_;
  seen_ = levels;
  if ((changed & wiring_.tck) == 0 || !powered_ || !listens_) return;
  if ((levels & wiring_.tck) != 0) {
    Rise((levels & wiring_.tms) != 0, (levels & wiring_.tdi) != 0);
  } else {
    Fall();
  }
}

std::vector<Signal> JtagChip::Signals() const {
  return {{"tck", wiring_.tck}, {"tms", wiring_.tms}, {"tdi", wiring_.tdi}, {"tdo", wiring_.tdo}};
}

void JtagChip::Rise(bool tms, bool tdi) {
  switch (state_) {
    case TapState::kCaptureDr:
      data_ = CaptureDr();
      stream_clocks_ = 0;
      break;
    case TapState::kShiftDr:
      ShiftData(tdi);
      break;
    case TapState::kCaptureIr:
      instruction_shift_ = instructions_.capture;
      break;
    case TapState::kShiftIr:
      instruction_shift_ = instruction_shift_ >> 1 | (tdi ? 1U : 0U) << (instructions_.length - 1);
      break;
    default:
      break;
  }
  state_ = NextState(state_, tms);
}

void JtagChip::ShiftData(bool tdi) {
  data_.bits = data_.bits >> 1 | std::uint64_t{tdi} << (data_.length - 1);
  if (!data_.streams || ++stream_clocks_ % kBitsOfAByte != 0) return;
  data_.bits = TakeByte(static_cast<std::uint8_t>(data_.bits));
}

void JtagChip::Fall() {
  driven_ = 0;
  switch (state_) {
    case TapState::kShiftDr:
      return PutOut((data_.bits & 1) != 0);
    case TapState::kShiftIr:
      return PutOut((instruction_shift_ & 1) != 0);
    case TapState::kUpdateDr:
      return UpdateDr(data_.bits);
    case TapState::kUpdateIr:
      instruction_ = instruction_shift_;
      return InstructionChanged();
    case TapState::kTestLogicReset:
      return EnterReset();
    default:
      return;
  }
}

void JtagChip::EnterReset() {
  state_ = TapState::kTestLogicReset;
  instruction_ = instructions_.at_reset;
  TestLogicReset();
}

/// A buffer that is closed passes nothing on.
void JtagChip::PutOut(bool bit) {
  if ((seen_ & wiring_.routing) == wiring_.joined) driven_ = wiring_.tdo;
  levels_ = bit ? wiring_.tdo : 0;
}

}  // namespace fliglaf::simulator
