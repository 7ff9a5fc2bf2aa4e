// How the programmer reaches parts on a clock and a data line: which bits of which port the lines
// are, by the device's option. The latches bring the socket's other pins to rest as well.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "usb/request/latches.h"

namespace fliglaf {

struct TwoWireAssignment {
  std::uint8_t option;                   ///< quorinwoption(0)
  std::uint8_t clock;                    ///< bit of the port
  std::uint8_t data;                     ///< bit of the port
  std::uint8_t fixed;                    ///< bits of the port that stay high
  std::uint8_t line_register;            ///< the port
  std::initializer_list<Latch> latches;  ///< in the order in which they are written
  bool has_vpp = false;                  ///< the part takes the programming voltage on a pin
  /// Bits that the reset pulse holds high, where has_vpp. Otherwise TwoWireLines::extraBits keeps
  /// what it has, and the pulse leaves it out.
  std::uint8_t extra = 0;
};

/// By the option of the device; null for an option without an assignment.
[[nodiscard]] const TwoWireAssignment* Fam12Assignment(std::uint8_t option);
[[nodiscard]] const TwoWireAssignment* Fam16Assignment(std::uint8_t option);

}  // namespace fliglaf
