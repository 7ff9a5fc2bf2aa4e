#include "families/serial_entry.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "families/serial_lines.h"

namespace fliglaf {
namespace {

using namespace serial;

constexpr int kEnableAttempts = 25;
constexpr std::uint8_t kEnableAnswer = 0x69;

/// Bytes 4 to 14 of the command buffer: how the programmer's shifter drives the serial lines.
using ShifterBytes = std::array<std::uint8_t, 11>;
constexpr int kFirstShifterByte = 4;
constexpr ShifterBytes kIspFam1Shifter{kLineLatch,           // line register
                                       8,                    //
                                       kClock,               // clock bit
                                       kIdleOutputs | 0x20,  // bits that stay high
                                       kDataIn,              // data-in bit
                                       kDataOut,             // data-out bit
                                       0,
                                       8,
                                       8,
                                       0,
                                       0};

void SetUpLines(Run& run) {
  run.io.WriteLatch(0x00, kResetMaskLatch);
  run.io.WriteLatch(kResetHigh, kResetLatch);
  run.io.WriteLatch(kDataIn, kLineMaskLatch);
  run.io.WriteLatch(kIdleOutputs, kLineLatch);
}

void ConfigureShifter(Run& run, const ShifterBytes& bytes) {
  std::ranges::copy(bytes,
                    run.vars.quorinubuf1.Range(kFirstShifterByte, std::ssize(bytes)).begin());
}

}  // namespace

void enterIspFam1(Run& run) {
  run.SendPacket({0x30, 0x01}, kLongPacket);
  SetUpLines(run);
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

}  // namespace fliglaf
