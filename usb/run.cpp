#include "usb/run.h"

#include <algorithm>
#include <limits>

namespace fliglaf {

std::u16string Run::Text(int number) const {
  return desktop.LoadText(std::int64_t{vars.quorinLanguage[0]} + number);
}

void Run::Progress(std::int64_t done, std::int64_t whole) {
  const std::int64_t percent = whole == 0 ? 0 : done * 100 / whole;
  vars.quorinprgmode[1] =
      static_cast<std::uint8_t>(std::clamp(percent, std::int64_t{0}, std::int64_t{100}));
}

std::int32_t Run::WriteTime(std::int32_t factor) const {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      std::int64_t{vars.quorinpwte[0]} * factor, Limits::min(), Limits::max()));
}

void Run::SendPacket(std::initializer_list<std::uint8_t> head, std::int32_t length) {
  const auto packet = vars.quorinubuf1.Range(0, length);
  std::ranges::copy(head, packet.begin());
  io.usbcomwrite(packet);
}

}  // namespace fliglaf
