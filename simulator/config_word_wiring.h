#pragma once

#include <cstdint>

#include "simulator/lines.h"

namespace fliglaf::simulator {

/// Which of the sockets a device with configuration words sits in.
struct ConfigWordSocket {
  std::int16_t pins = 0;  ///< of the package
  std::uint8_t mode = 0;  ///< the host's programming mode
  std::int16_t kind = 0;  ///< and its parameter of the device
  bool adapter = false;   ///< of the packages with 44 pins
};

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

/// Throws std::invalid_argument for a package that there is no socket for.
[[nodiscard]] ConfigWordWiring ConfigWordWiringOf(const ConfigWordSocket& socket);

}  // namespace fliglaf::simulator
