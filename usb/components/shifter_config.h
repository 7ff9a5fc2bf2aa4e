#pragma once

#include <cstdint>

namespace fliglaf {

/// How the programmer's shifter drives the lines of a device: bytes 4 to 15 of the command buffer.
/// Families write as many of them as they need and leave the rest as it is.
struct ShifterConfig {
  std::uint8_t line_register;     ///< 4
  std::uint8_t clock_rests_high;  ///< 5: 1 when it does
  std::uint8_t clock;             ///< 6
  std::uint8_t fixed;             ///< 7: bits that are high all the while
  std::uint8_t data_in;           ///< 8: from the chip
  std::uint8_t data_out;          ///< 9: to the chip
  std::uint8_t byte10;
  std::uint8_t low_bits;  ///< 11: bits of a group that goes out bit 0 first
  std::uint8_t byte12;
  std::uint8_t line_register2;
  std::uint8_t fixed2;
  std::uint8_t mode_select;  ///< 15: TMS
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
