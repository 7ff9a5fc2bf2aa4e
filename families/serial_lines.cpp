#include "families/serial_lines.h"

namespace fliglaf::serial {

void Send(Run& run, std::initializer_list<std::uint8_t> bytes) {
  for (const std::uint8_t byte : bytes) run.io.WriteRegister(byte, reg::kShiftOut);
}

std::uint8_t Receive(Run& run) {
  run.io.WriteRegister(1, reg::kCapture);
  return static_cast<std::uint8_t>(run.io.ReadRegister(reg::kCaptured));
}

}  // namespace fliglaf::serial
