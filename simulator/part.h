#pragma once

#include <memory>

#include "simulator/chip.h"
#include "simulator/jtag_wiring.h"
#include "simulator/socket.h"

namespace fliglaf::simulator {

/// A chip, and how the socket takes it.
struct Part {
  std::unique_ptr<Chip> chip;
  SupplyPins supply;
  /// The line on which the chip answers, where an adapter joins the programmer's input to it.
  Lines joined_input = 0;
  /// Of its test access port, null for a chip that has none. Outlives the part.
  const JtagWiring* jtag = nullptr;
};

}  // namespace fliglaf::simulator
