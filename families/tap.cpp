#include "families/tap.h"

namespace fliglaf {

void Tap::OpenInput() {
  io_.WriteLatch(lines_.tdoMask, static_cast<std::uint8_t>(lines_.lineRegister + 1));
}

void Tap::ConfigureShifter() {
  run_.ConfigureShifter({.line_register = lines_.lineRegister,
                         .clock = lines_.tckMask,
                         .fixed = lines_.fixed(),
                         .data_in = lines_.tdoMask,
                         .data_out = lines_.tdiMask,
                         .low_bits = 6,
                         .line_register2 = lines_.lineRegister,
                         .fixed2 = lines_.fixed(),
                         .mode_select = lines_.tmsMask},
                        ShifterLength::kJtag);
}

std::int32_t Tap::CaptureNow() {
  io_.WriteRegister(1, reg::kCapture);
  return reverseBits(io_.ReadRegister(reg::kCaptured), 8);
}

}  // namespace fliglaf
