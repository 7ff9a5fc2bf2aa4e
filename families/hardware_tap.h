// A test access port that the programmer walks on its own: a command a walk, and a command for the
// last bits of a shift.
#pragma once

#include "families/tap.h"

namespace fliglaf {

class HardwareTap final : public Tap {
 public:
  using Tap::Tap;

  /// Counts of 1, 2, 10, 16, 17, 18, 19 and 32, which devices with 16-bit instructions need; nothing
  /// for others. Bytes go out whole, whatever they hold above the count.
  void shiftBits(std::int32_t value, std::int16_t n);
  /// 1 shifts a bit and captures nothing. 11 clocks three times and captures eight bits for the
  /// next bulk read. -32 returns the digest of an identification code. Other counts only wait.
  std::int32_t shiftBitsCapture(std::int32_t value, std::int16_t n);
  void scanDr(std::int32_t value, std::int16_t n);
  void scanIr(std::int32_t value, std::int16_t n);
  std::int32_t scanDrCapture(std::int32_t value, std::int16_t n);

  /// The digest of a 32-bit identification code: manufacturer in bits 0 to 7, part in 8 to 15,
  /// version in 16 to 19.
  [[nodiscard]] std::int32_t ReadIdentification() { return scanDrCapture(0, -32); }

 private:
  void ShiftNineteen(std::uint32_t bits);
  std::int32_t CaptureIdentification();
};

}  // namespace fliglaf
