#include "usb/request/run.h"

#include <algorithm>

namespace fliglaf {

void Run::SendPacket(std::initializer_list<std::uint8_t> head, std::int32_t length) {
  const auto packet = vars.quorinubuf1.Range(0, length);
  std::ranges::copy(head, packet.begin());
  io.usbcomwrite(packet);
}

}  // namespace fliglaf
