#include "simulator/chips/instruction_chip.h"

namespace fliglaf::simulator {

void InstructionChip::Restart() {
  enabled_ = false;
  taken_ = 0;
}

void InstructionChip::TakeByte(std::uint8_t byte) {
  bytes_[taken_++] = byte;
  if (taken_ == length_ - 1) {
    if (const auto answer = Answer()) Load(*answer);
  }
  if (taken_ < length_) return;
  taken_ = 0;
  Execute();
}

bool InstructionChip::IsEnable() const {
  constexpr std::uint8_t kProgrammingEnable = 0x53;
  return byte_at(0) == kControl && byte_at(1) == kProgrammingEnable;
}

bool InstructionChip::TakeEnable() {
  if (!IsEnable()) return false;
  enabled_ = true;
  return true;
}

}  // namespace fliglaf::simulator
