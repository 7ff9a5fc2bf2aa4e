#include "simulator/jtag_cable.h"

namespace fliglaf::simulator {

JtagCable::JtagCable(Clock& clock, Socket& socket, const JtagWiring& wiring)
    : clock_(clock), socket_(socket), wiring_(wiring) {
  Drive(false, false, false);
  socket_.PowerUp();
}

/// The cable goes to the chip itself: all that lies between a programmer and the chip lets it pass.
void JtagCable::Drive(bool tck, bool tms, bool tdi) {
  clock_.FollowWall();
  socket_.Observe(wiring_.joined | (tck ? wiring_.tck : 0) | (tms ? wiring_.tms : 0) |
                  (tdi ? wiring_.tdi : 0));
}

void JtagCable::Wait(std::int64_t nanoseconds) {
  clock_.FollowWall();
  clock_.Advance(nanoseconds);
}

}  // namespace fliglaf::simulator
