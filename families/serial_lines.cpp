#include "families/serial_lines.h"

#include <algorithm>

namespace fliglaf::serial {
namespace {

constexpr int kFirstShifterByte = 4;
constexpr std::uint8_t kReadSignature = 0x30;

}  // namespace

void SetUpLines(Run& run, std::uint8_t reset) {
  run.io.WriteLatch(0x00, kResetMaskLatch);
  run.io.WriteLatch(reset, kResetLatch);
  run.io.WriteLatch(kDataIn, kLineMaskLatch);
  run.io.WriteLatch(kIdleOutputs, kLineLatch);
}

void ConfigureShifter(Run& run, std::span<const std::uint8_t> bytes) {
  std::ranges::copy(bytes,
                    run.vars.quorinubuf1.Range(kFirstShifterByte, std::ssize(bytes)).begin());
}

void Send(Run& run, std::initializer_list<std::uint8_t> bytes) {
  for (const std::uint8_t byte : bytes) run.io.WriteRegister(byte, reg::kShiftOut);
}

std::uint8_t Receive(Run& run) {
  run.io.WriteRegister(1, reg::kCapture);
  return static_cast<std::uint8_t>(run.io.ReadRegister(reg::kCaptured));
}

std::array<std::uint8_t, 3> WordFamilySignature(Run& run) {
  std::array<std::uint8_t, 3> bytes{};
  std::uint8_t address = 0;
  for (std::uint8_t& byte : bytes) {
    Send(run, {kReadSignature, 0x00, address++});
    byte = Receive(run);
  }
  return bytes;
}

}  // namespace fliglaf::serial
