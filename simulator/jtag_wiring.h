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

/// The other ways in which parts with JTAG are wired, by the option of families 8 to 11.
inline constexpr JtagWiring kJtagWiring22{
    .tck = LinesOf(2, 0x10),
    .tms = LinesOf(2, 0x20),
    .tdi = LinesOf(2, 0x80),
    .tdo = LinesOf(2, 0x40),
    .routing = LinesOf(2, 0x08) | LinesOf(0, 0x02),
    .joined = LinesOf(2, 0x08) | LinesOf(0, 0x02),
};
inline constexpr JtagWiring kJtagWiring23{
    .tck = LinesOf(0, 0x20),
    .tms = LinesOf(0, 0x10),
    .tdi = LinesOf(0, 0x40),
    .tdo = LinesOf(0, 0x80),
    .routing = LinesOf(0, 0x09) | LinesOf(2, 0xA0) | LinesOf(6, 0x01),
    .joined = LinesOf(0, 0x09) | LinesOf(2, 0xA0) | LinesOf(6, 0x01),
};
inline constexpr JtagWiring kJtagWiring24{
    .tck = LinesOf(0, 0x10),
    .tms = LinesOf(0, 0x20),
    .tdi = LinesOf(0, 0x80),
    .tdo = LinesOf(0, 0x40),
    .routing = LinesOf(2, 0x40) | LinesOf(4, 0x02) | LinesOf(6, 0x04),
    .joined = LinesOf(2, 0x40) | LinesOf(4, 0x02) | LinesOf(6, 0x04),
};

}  // namespace fliglaf::simulator
