#include "usb/request/run.h"

#include <algorithm>
#include <array>
#include <bit>

namespace fliglaf {

void Run::SendPacket(std::initializer_list<std::uint8_t> head, std::int32_t length) {
  const auto packet = vars.quorinubuf1.Range(0, length);
  std::ranges::copy(head, packet.begin());
  io.usbcomwrite(packet);
}

void Run::ConfigureShifter(const ShifterConfig& config, ShifterLength length) {
  constexpr int kFirstByte = 4;
  const auto bytes = std::bit_cast<std::array<std::uint8_t, sizeof(ShifterConfig)>>(config);
  const auto count = static_cast<std::ptrdiff_t>(length);
  std::copy_n(bytes.begin(), count, vars.quorinubuf1.Range(kFirstByte, count).begin());
}

}  // namespace fliglaf
