#include "simulator/remote_bitbang.h"

#include <array>
#include <cstdio>

namespace fliglaf::simulator {
namespace {

std::string Describe(char request) {
  std::array<char, 128> text{};
  std::snprintf(
      text.data(), text.size(),
      "the client sent 0x%02X, which is not a request of remote_bitbang for JTAG: 0 to 7, R, "
      "B, b, r, s, t, u, Z, z, Q",
      static_cast<unsigned char>(request));
  return text.data();
}

}  // namespace

void RemoteBitbang::Take(std::string_view requests, std::string& answers) {
  for (const char request : requests) {
    if (quit_) return;
    if (request >= '0' && request <= '7') {
      const int levels = request - '0';
      cable_.Drive((levels & 4) != 0, (levels & 2) != 0, (levels & 1) != 0);
      continue;
    }
    switch (request) {
      case 'R':
        answers += cable_.tdo() ? '1' : '0';
        break;
      case 'Z':
        cable_.Wait(Clock::kMillisecond);
        break;
      case 'z':
        cable_.Wait(Clock::kMicrosecond);
        break;
      case 'Q':
        quit_ = true;
        break;
      case 'B':  // the activity LED, which this bench does not have
      case 'b':
      case 'r':  // TRST and SRST: these chips have no TRST, and the port has no part in their reset
      case 's':
      case 't':
      case 'u':
        break;
      default:
        throw UnknownRequest(Describe(request));
    }
  }
}

}  // namespace fliglaf::simulator
