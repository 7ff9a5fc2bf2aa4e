#include "families/tap.h"

namespace fliglaf {

void Tap::SendModePacket() { run_.SendPacket({0x30, 0x01}, kLongPacket); }

void Tap::OpenInput() {
  io_.WriteLatch(lines_.tdoMask, static_cast<std::uint8_t>(lines_.lineRegister + 1));
}

void Tap::ConfigureShifter() {
  run_.ConfigureShifter({.line_register = lines_.lineRegister,
                         .clock_rests_high = 8,  // only 1 means that it does
                         .clock = lines_.tckMask,
                         .fixed = lines_.fixed(),
                         .data_in = lines_.tdoMask,
                         .data_out = lines_.tdiMask,
                         .byte10 = 0,
                         .low_bits = 6,
                         .byte12 = 8,
                         .line_register2 = lines_.lineRegister,
                         .fixed2 = lines_.fixed(),
                         .mode_select = lines_.tmsMask},
                        ShifterLength::kJtag);
}

void Tap::SetLine(std::uint8_t& state, std::uint8_t bit, std::uint8_t mask) {
  state = static_cast<std::uint8_t>(bit * mask);
  Queue(lines_.levels(), lines_.lineRegister);
}

// Most of what a pass queues comes from here, so both levels are worked out once.
void Tap::pulseTckN(std::int16_t n) {
  if (n < 1) return;
  lines_.tckState = 0;
  const std::uint8_t low = lines_.levels();
  const auto high = static_cast<std::uint8_t>(low | lines_.tckMask);
  for (std::int16_t i = 0; i < n; ++i) {
    Queue(high, lines_.lineRegister);
    Queue(low, lines_.lineRegister);
  }
}

void Tap::Walk(std::int16_t high, std::int16_t low) {
  setTms(1);
  pulseTckN(high);
  setTms(0);
  pulseTckN(low);
}

std::int32_t Tap::CaptureNow() {
  io_.WriteRegister(1, reg::kCapture);
  return reverseBits(io_.ReadRegister(reg::kCaptured), 8);
}

void Tap::LastBit(std::uint32_t value) {
  setTdi(LowBit(value));
  setTms(1);
  pulseTck();
}

}  // namespace fliglaf
