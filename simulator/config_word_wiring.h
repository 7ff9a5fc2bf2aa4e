#pragma once

#include "simulator/lines.h"

namespace fliglaf::simulator {

/// Levels of some lines.
struct LineLevels {
  Lines lines = 0;
  Lines levels = 0;

  [[nodiscard]] bool Fit(Lines actual) const { return (actual & lines) == levels; }
};

/// What a socket wants on its way into the bit-serial programming mode.
struct ConfigWordWiring {
  LineLevels before_supply;  ///< as the supply comes
  LineLevels after_supply;   ///< then
  LineLevels at_the_end;     ///< and at last, with the programming voltage
};

}  // namespace fliglaf::simulator
