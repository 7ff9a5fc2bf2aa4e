#pragma once

#include <cstdint>

namespace fliglaf {

/// How the programmer's shifter drives the lines of a device: bytes 4 to 15 of the command buffer.
/// Families write as many of them as they need and leave the rest as it is.
struct ShifterConfig {
  /// Values of byte 5. Any other than 1 means that the clock rests low; families write 8.
  static constexpr std::uint8_t kClockRestsHigh = 1;
  static constexpr std::uint8_t kClockRestsLow = 8;

  std::uint8_t line_register = 0;                  ///< 4
  std::uint8_t clock_rests_high = kClockRestsLow;  ///< 5
  std::uint8_t clock = 0;                          ///< 6
  std::uint8_t fixed = 0;                          ///< 7: bits that are high all the while
  std::uint8_t data_in = 0;                        ///< 8: from the chip
  std::uint8_t data_out = 0;                       ///< 9: to the chip
  std::uint8_t byte10 = 0;
  std::uint8_t low_bits = 8;  ///< 11: bits of a group that goes out bit 0 first
  std::uint8_t byte12 = 8;
  std::uint8_t line_register2 = 0;
  std::uint8_t fixed2 = 0;
  std::uint8_t mode_select = 0;  ///< 15: TMS
};
static_assert(sizeof(ShifterConfig) == 12);

/// How many of its bytes a family writes.
enum class ShifterLength : std::uint8_t {
  kShort = 9,  ///< serial lines, without bytes 13 and 14
  kTwoWire = 10,
  kSerial = 11,
  kJtag = 12,
};

}  // namespace fliglaf
