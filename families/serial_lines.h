// What the serial families share: their lines, and instructions sent byte by byte.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "usb/run.h"

namespace fliglaf::serial {

/// Latches of the serial lines: an even one drives a port, the odd one above it is its input mask.
inline constexpr std::uint8_t kLineLatch = 0;
inline constexpr std::uint8_t kLineMaskLatch = 1;
inline constexpr std::uint8_t kResetLatch = 2;
inline constexpr std::uint8_t kResetMaskLatch = 3;

/// Bits of the line latch.
inline constexpr std::uint8_t kDataOut = 0x01;  ///< to the device
inline constexpr std::uint8_t kDataIn = 0x02;   ///< from the device
inline constexpr std::uint8_t kClock = 0x10;
inline constexpr std::uint8_t kIdleOutputs = 0x80;

/// Values of the reset latch.
inline constexpr std::uint8_t kResetLow = 0x00;
inline constexpr std::uint8_t kResetHigh = 0x08;

/// Sends instruction bytes at once.
void Send(Run& run, std::initializer_list<std::uint8_t> bytes);
/// Captures one byte at once.
std::uint8_t Receive(Run& run);

/// Queues one instruction byte.
inline void QueueSend(Run& run, std::uint8_t byte) {
  run.io.QueueRegisterWrite(byte, reg::kShiftOut);
}
/// Queues the capture of one byte; it comes back with the next bulk read.
inline void QueueCapture(Run& run) { run.io.QueueRegisterWrite(1, reg::kCapture); }

}  // namespace fliglaf::serial
