#pragma once

#include <cstdint>

#include "simulator/clock.h"
#include "simulator/jtag_wiring.h"
#include "simulator/socket.h"

namespace fliglaf::simulator {

/// The cable of another JTAG tool, in the place of the programmer. While it is there the chip is
/// supplied as it is made for, and its time follows the wall's.
class JtagCable {
 public:
  JtagCable(Clock& clock, Socket& socket, const JtagWiring& wiring);
  ~JtagCable() { socket_.AllOff(); }
  JtagCable(const JtagCable&) = delete;
  JtagCable& operator=(const JtagCable&) = delete;

  void Drive(bool tck, bool tms, bool tdi);
  /// The level of TDO; low where the chip does not drive it.
  [[nodiscard]] bool tdo() const { return socket_.Level(wiring_.tdo); }
  void Wait(std::int64_t nanoseconds);

 private:
  Clock& clock_;
  Socket& socket_;
  const JtagWiring& wiring_;
};

}  // namespace fliglaf::simulator
