// The test access port of a JTAG device (IEEE 1149.1) on the four lines of the programmer: levels,
// shifts, and scans. Nearly all of it is queued: it reaches the device with the next FlushQueue.
//
// Two classes walk the port: SoftwareTap sets single levels of TMS and TCK, HardwareTap has the
// programmer walk. A family has one or the other. In both
//
//   shiftBits         shifts the low `n` bits of `value` into TDI, bit 0 first, with TMS high on the
//                     last: from Shift-DR or Shift-IR to Exit1
//   shiftBitsCapture  captures from TDO while it shifts
//   scanDr, scanIr, scanDrCapture do the same from Run-Test/Idle and back
//
// The class says which counts there are.
#pragma once

#include <cstdint>

#include "families/lines.h"
#include "usb/components/bits.h"
#include "usb/request/run.h"

namespace fliglaf {

/// The lines of most JTAG devices: port 0, with the buffers of both directions enabled.
inline constexpr JtagLines kJtagPort0{.fixedBitsA = 0x80,
                                      .fixedBitsB = 0x20,
                                      .lineRegister = 0,
                                      .tdiMask = 0x01,
                                      .tdoMask = 0x02,
                                      .tmsMask = 0x04,
                                      .tckMask = 0x10};

class Tap {
 public:
  Tap(Run& run, JtagLines& lines) : lines_(lines), run_(run), io_(run.io) {}

  /// Lets TDO through the input mask of the port.
  void OpenInput();
  /// Tells the programmer's shifter which lines are which.
  void ConfigureShifter();

  // Levels of a line: 0 or 1.
  void setTck(std::uint8_t bit) { SetLine(lines_.tckState, bit, lines_.tckMask); }
  void setTms(std::uint8_t bit) { SetLine(lines_.tmsState, bit, lines_.tmsMask); }
  void setTdi(std::uint8_t bit) { SetLine(lines_.tdiState, bit, lines_.tdiMask); }
  void pulseTck() { pulseTckN(1); }
  /// Does nothing for `n` below 1. Most of what a pass queues comes from here, so both levels are
  /// worked out once.
  void pulseTckN(std::int16_t n) {
    if (n < 1) return;
    lines_.tckState = 0;
    const std::uint8_t low = lines_.levels();
    const auto high = static_cast<std::uint8_t>(low | lines_.tckMask);
    const std::uint8_t port = lines_.lineRegister;
    Programmer& io = io_;
    for (std::int16_t i = 0; i < n; ++i) {
      io.QueueRegisterWrite(high, port);
      io.QueueRegisterWrite(low, port);
    }
  }

  /// Clocks TMS high `high` times, then low `low` times.
  void Walk(std::int16_t high, std::int16_t low) {
    setTms(1);
    pulseTckN(high);
    setTms(0);
    pulseTckN(low);
  }
  /// From any state to Run-Test/Idle.
  void resetTap() { Walk(5, 2); }

 protected:
  ~Tap() = default;

  void Queue(std::int32_t value, std::uint8_t command) { io_.QueueRegisterWrite(value, command); }
  void QueueCapture() { Queue(1, reg::kCapture); }
  /// Captures at once; the first bit is bit 0.
  [[nodiscard]] std::int32_t CaptureNow();
  /// The last bit of a shift, bit 0 of `value`, with TMS high.
  void LastBit(std::uint32_t value) {
    setTdi(LowBit(value));
    setTms(1);
    pulseTck();
  }

  /// A byte as the shifter takes it: it sends bit 7 first.
  [[nodiscard]] static std::int32_t Reversed(std::uint32_t value) {
    return reverseBits(static_cast<std::int32_t>(value & 0xFF), 8);
  }
  [[nodiscard]] static std::uint8_t LowBit(std::uint32_t value) {
    return static_cast<std::uint8_t>(value & 1);
  }

  JtagLines& lines_;
  Run& run_;
  Programmer& io_;

 private:
  void SetLine(std::uint8_t& state, std::uint8_t bit, std::uint8_t mask) {
    state = static_cast<std::uint8_t>(bit * mask);
    Queue(lines_.levels(), lines_.lineRegister);
  }
};

}  // namespace fliglaf
