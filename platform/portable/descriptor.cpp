#include "platform/portable/descriptor.h"

#include <cerrno>
#include <poll.h>
#include <system_error>
#include <unistd.h>

#include "platform/terminal.h"

namespace fliglaf::platform {

void ThrowErrno() { throw std::system_error(errno, std::generic_category()); }

void WaitUntilReady(int descriptor, short events) {
  constexpr int kTurnMs = 50;
  for (;;) {
    pollfd wanted{descriptor, events, 0};
    const int ready = poll(&wanted, 1, kTurnMs);
    if (ready > 0) return;
    if (ready < 0 && errno != EINTR) ThrowErrno();
    if (StopRequested()) throw Stopped();
  }
}

Descriptor::~Descriptor() {
  if (is_open()) close(number_);
}

}  // namespace fliglaf::platform
