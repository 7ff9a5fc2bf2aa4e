#include "families/serial_lines.h"

#include <algorithm>
#include <array>

#include "usb/request/latches.h"

namespace fliglaf {
namespace {

// Latches come in pairs: an even one drives a port, the odd one above it is its input mask.
constexpr std::uint8_t kLineMaskLatch = 1;
constexpr std::uint8_t kResetLatch = 2;
constexpr std::uint8_t kResetMaskLatch = 3;

// Bits of the line latch.
constexpr std::uint8_t kDataOut = 0x01;  ///< to the device
constexpr std::uint8_t kDataIn = 0x02;   ///< from the device
constexpr std::uint8_t kClock = 0x10;

constexpr std::uint8_t kReadSignature = 0x30;

}  // namespace

void SerialLines::SetUp(ResetLevel level) {
  DriveReset(level);
  WriteLatches(run_, std::array{Latch{kDataIn, kLineMaskLatch}, Latch{kIdleOutputs, kLineLatch}});
}

void SerialLines::DriveReset(ResetLevel level) {
  io_.WriteLatch(0x00, kResetMaskLatch);
  SetReset(level);
}

void SerialLines::SetReset(ResetLevel level) {
  io_.WriteLatch(static_cast<std::uint8_t>(level), kResetLatch);
}

void SerialLines::ConfigureShifter(ShifterLength length, std::uint8_t fixed) {
  run_.ConfigureShifter({.line_register = kLineLatch,
                         .clock = kClock,
                         .fixed = fixed,
                         .data_in = kDataIn,
                         .data_out = kDataOut},
                        length);
}

void SerialLines::Send(std::initializer_list<std::uint8_t> bytes) {
  for (const std::uint8_t byte : bytes) io_.WriteRegister(byte, reg::kShiftOut);
}

void SerialLines::SendControl(std::initializer_list<std::uint8_t> bytes) {
  Send({kControl});
  Send(bytes);
}

std::uint8_t SerialLines::Receive() {
  io_.WriteRegister(1, reg::kCapture);
  return static_cast<std::uint8_t>(io_.ReadRegister(reg::kCaptured));
}

Signature SerialLines::ReadWordFamilySignature() {
  Signature bytes{};
  std::uint8_t address = 0;
  for (std::uint8_t& byte : bytes) {
    Send({kReadSignature, 0x00, address++});
    byte = Receive();
  }
  return bytes;
}

}  // namespace fliglaf
