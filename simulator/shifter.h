#pragma once

#include <array>
#include <cstdint>

#include "simulator/wires.h"

namespace fliglaf::simulator {

/// How the shifter drives its lines: bytes 4 to 15 of the command buffer.
struct ShifterBytes {
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
static_assert(sizeof(ShifterBytes) == 12);

/// The programmer's shifter: clocks bytes over the lines at 1 MHz. It drives its clock, and its
/// data output while it sends, although they may be inputs by their mask.
class Shifter {
 public:
  static constexpr std::int64_t kHalfBit = 500;  ///< ns

  explicit Shifter(Wires& wires) : wires_(wires) {}

  /// One byte out, bit 7 first.
  void OutHighFirst(const ShifterBytes& bytes, std::uint8_t value);
  /// A group of bits out, bit 0 first: 6 or 8 of them.
  void OutLowFirst(const ShifterBytes& bytes, std::uint8_t value);
  /// The last `count` bits of a scan, 1 to 8, bit 7 first, with TMS high on the last of them.
  void OutLast(const ShifterBytes& bytes, std::uint8_t value, int count);
  /// A step of a scan: one pulse with TMS high, then `low_pulses` with TMS low.
  void Walk(const ShifterBytes& bytes, int low_pulses);
  /// The low `count` bits out, bit 0 first.
  void OutLowBits(const ShifterBytes& bytes, std::uint8_t value, int count);
  /// One byte in, bit 7 first, with the data output low.
  [[nodiscard]] std::uint8_t In(const ShifterBytes& bytes);

 private:
  void Rest(const ShifterBytes& bytes);
  void ClockBit(const ShifterBytes& bytes, std::uint8_t high);

  Wires& wires_;
};

}  // namespace fliglaf::simulator
