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

/// Called at every clock edge. A buffer that is closed passes nothing on.
void JtagChip::Observe(Lines levels) {
  joined_ = (levels & wiring_.routing) == wiring_.joined;
  if (!joined_) driven_ = 0;
  const bool tck = joined_ && (levels & wiring_.tck) != 0;
  if (tck == tck_) return;
  tck_ = tck;
  if (!powered_ || !listens_) return;
  tck ? Rise(levels) : Fall();
}

std::vector<Signal> JtagChip::Signals() const {
  return {{"tck", wiring_.tck}, {"tms", wiring_.tms}, {"tdi", wiring_.tdi}, {"tdo", wiring_.tdo}};
}

void JtagChip::Rise(Lines levels) {
  const TapState state = state_;
  state_ = NextState(state, (levels & wiring_.tms) != 0);
  switch (state) {
    case TapState::kShiftDr:
      return ShiftData((levels & wiring_.tdi) != 0);
    case TapState::kShiftIr:
      return ShiftInstruction((levels & wiring_.tdi) != 0);
    case TapState::kCaptureDr:
      data_ = CaptureDr();
      stream_clocks_ = 0;
      return;
    case TapState::kCaptureIr:
      instruction_shift_ = instructions_.capture;
      return;
    default:
      return;
  }
}

void JtagChip::ShiftInstruction(bool tdi) {
  instruction_shift_ = instruction_shift_ >> 1 | std::uint32_t{tdi} << (instructions_.length - 1);
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

void JtagChip::PutOut(bool bit) {
  if (joined_) driven_ = wiring_.tdo;
  levels_ = bit ? wiring_.tdo : 0;
}

}  // namespace fliglaf::simulator
