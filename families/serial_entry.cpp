#include "families/serial_entry.h"

#include <array>
#include <cstdint>

#include "families/serial_lines.h"

namespace fliglaf {
namespace {

using namespace serial;

constexpr int kEnableAttempts = 25;
constexpr std::uint8_t kEnableAnswer = 0x69;

/// Family 1 has the buffer of the device's answer open all the while: bit 5 stays high.
constexpr std::array<std::uint8_t, 11> kIspFam1Shifter{
    kLineLatch, 8, kClock, kIdleOutputs | 0x20, kDataIn, kDataOut, 0, 8, 8, 0, 0};

}  // namespace

void enterIspFam1(Run& run) {
  run.SendPacket({0x30, 0x01}, kLongPacket);
  SetUpLines(run, kResetHigh);
  run.io.DelayMs(100);
  ConfigureShifter(run, kIspFam1Shifter);
  for (int attempt = 0; attempt < kEnableAttempts; ++attempt) {
    run.io.WriteLatch(kResetLow, kResetLatch);
    run.io.WriteLatch(kResetHigh, kResetLatch);
    run.io.DelayMs(100);
    Send(run, {0xAC, 0x53, 0xFF});
    const std::uint8_t answer = Receive(run);
    run.io.DelayMs(100);
    if (answer == kEnableAnswer) return;
  }
}

void enterIspFam2(Run& run) {
  SetUpLines(run, kResetHigh);
  run.io.DelayMs(100);
  run.io.WriteLatch(kResetLow, kResetLatch);
  ConfigureShifter(run, kShortShifter);
  run.io.WriteLatch(kResetHigh, kResetLatch);
  Send(run, {0xAC, 0x53, 0xFF});
}

void enterIspFam3(Run& run) {
  run.SendPacket({0x30, 0x01}, kLongPacket);
  SetUpLines(run, kResetHigh);
  run.io.DelayMs(100);
  run.io.WriteLatch(kResetLow, kResetLatch);
  run.io.DelayMs(200);
  ConfigureShifter(run, kShortShifter);
  Send(run, {0xAC, 0x53, 0x00, 0x00});
}

}  // namespace fliglaf
