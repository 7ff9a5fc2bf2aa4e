#pragma once

#include "simulator/lines.h"

namespace fliglaf::simulator {

/// Where a chip's serial interface is wired to, and when it listens.
struct SerialWiring {
  Lines reset;
  Lines clock;
  Lines data_in;   ///< to the chip
  Lines data_out;  ///< from the chip
  /// Lines that must be high for clock and data to reach the chip, and for its answer to come back.
  Lines enable_to_chip;
  Lines enable_from_chip;
  bool listens_high = true;  ///< the level of reset at which the chip can be programmed
  Lines select = 0;          ///< low while an instruction is sent; none: always selected
};

/// The serial lines: port 0 carries clock, data and the buffers' enable, port 1 the reset.
inline constexpr SerialWiring kSerialWiring{
    .reset = LinesOf(2, 0x08),
    .clock = LinesOf(0, 0x10),
    .data_in = LinesOf(0, 0x01),
    .data_out = LinesOf(0, 0x02),
    .enable_to_chip = LinesOf(0, 0x80),
    .enable_from_chip = LinesOf(0, 0x80),
};

/// The same for a chip that listens while reset is low.
inline constexpr SerialWiring kSerialWiringLow = [] {
  SerialWiring wiring = kSerialWiring;
  wiring.listens_high = false;
  return wiring;
}();

}  // namespace fliglaf::simulator
