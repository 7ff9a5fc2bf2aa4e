#pragma once

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
  Lines reset_enable = 0;  ///< must be high for a reset pulse to count; may be none
};

}  // namespace fliglaf::simulator
