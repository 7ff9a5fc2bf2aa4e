// A test access port that is walked with single levels of TMS and TCK. Whole bytes and groups of
// six bits are left to the programmer's shifter, which spares most of the writes.
#pragma once

#include "families/tap.h"

namespace fliglaf {

class SoftwareTap final : public Tap {
 public:
  using Tap::Tap;

  /// Counts of 4, 8, 15 and 16; every other one shifts a single bit.
  void shiftBits(std::int32_t value, std::int16_t n);
  /// Captures eight bits out of a shift of 15, for which the low byte of `value` is not sent. With
  /// 15 they come with the next bulk read, with -15 they are returned, first bit in bit 0; nothing
  /// is sent for other counts.
  std::int32_t shiftBitsCapture(std::int32_t value, std::int16_t n);
  void scanDr(std::int32_t value, std::int16_t n);
  void scanIr(std::int32_t value, std::int16_t n);
  std::int32_t scanDrCapture(std::int32_t value, std::int16_t n);

  /// Scans a command of 15 bits; the byte that the device answers comes with the next bulk read.
  void CaptureAnswer(std::int32_t command) { scanDrCapture(command, 15); }
  /// The same with an answer that is read at once.
  [[nodiscard]] std::uint8_t ReadAnswerNow(std::int32_t command) {
    return static_cast<std::uint8_t>(scanDrCapture(command, -15));
  }

  // A long register in Shift-DR, byte after byte.
  void CaptureByte() { QueueCapture(); }
  void ShiftByte(std::uint8_t byte) { Queue(Reversed(byte), reg::kShiftOut); }

  // Walks. After shiftBits the port is in Exit1, after a byte still in Shift-DR.
  void FromIdleToShiftDr() { Walk(1, 2); }
  void FromShiftDrToIdle() { Walk(2, 1); }
  void FromExit1ToIdle() { Walk(1, 1); }
  /// Through Update-DR and Capture-DR back to Shift-DR.
  void UpdateFromShiftDr() { Walk(3, 2); }
  void UpdateFromExit1() { Walk(2, 2); }
  /// One clock in Run-Test/Idle.
  void Idle();
};

}  // namespace fliglaf
