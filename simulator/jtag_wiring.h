#pragma once

#include "simulator/lines.h"

namespace fliglaf::simulator {

/// Where a chip's test access port is wired to.
struct JtagWiring {
  Lines tck;
  Lines tms;
  Lines tdi;  ///< to the chip
  Lines tdo;  ///< from the chip
  /// Lines that join the port to the chip, and the levels at which they do: buffers, switches of an
  /// adapter. Else nothing reaches the chip and nothing comes back.
  Lines routing;
  Lines joined;
};

/// The JTAG lines of port 0, with a buffer for each direction.
inline constexpr JtagWiring kJtagWiring{
    .tck = LinesOf(0, 0x10),
    .tms = LinesOf(0, 0x04),
    .tdi = LinesOf(0, 0x01),
    .tdo = LinesOf(0, 0x02),
    .routing = LinesOf(0, 0xA0),
    .joined = LinesOf(0, 0xA0),
};

}  // namespace fliglaf::simulator
