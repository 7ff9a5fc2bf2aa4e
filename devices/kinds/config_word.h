#pragma once

#include <cstdint>

#include "devices/device_profile.h"
#include "simulator/clock.h"
#include "simulator/part.h"

namespace fliglaf {

/// Which of the sockets a device with configuration words sits in.
struct ConfigWordSocket {
  std::int16_t pins = 0;   ///< of the package
  std::uint8_t mode = 0;   ///< the host's programming mode
  std::int16_t kind = 0;   ///< and its parameter of the device
  bool adapter = false;    ///< of the packages with 44 pins
  bool vpp_first = false;  ///< the programming voltage comes ahead of the supply
};

/// A new part in any of the sockets; a profile gives the pins alone. `clock` outlives the part.
/// Throws std::invalid_argument for a number of pins that no socket has.
[[nodiscard]] simulator::Part MakeConfigWordPart(const DeviceProfile& device,
                                                 const ConfigWordSocket& socket,
                                                 const simulator::Clock& clock);

}  // namespace fliglaf
