#pragma once

#include <cstdint>

#include "simulator/lines.h"

namespace fliglaf::simulator {

/// Where a chip's clock and data line are wired to.
struct TwoWireWiring {
  Lines clock;
  Lines clock_hold;  ///< holds the clock low while it is low itself; may be none
  Lines data;        ///< both ways
  /// Lines that join the programmer to the chip, and the levels at which they do.
  Lines routing;
  Lines joined;
  Lines reset_enable = 0;  ///< high at a reset pulse, or it is none
};

/// The wiring of the variants of family 12, by their option, 12 to 31, and of family 16, whose
/// clock is pulled down over a line of its own for a reset pulse. Throws std::invalid_argument for
/// any other.
[[nodiscard]] TwoWireWiring TwoWireWiringOf(std::uint8_t family, std::uint8_t option);

}  // namespace fliglaf::simulator
