#include "devices/kinds/config_word_sockets.h"

#include <stdexcept>
#include <string>

namespace fliglaf {
namespace {

using simulator::ConfigWordWiring, simulator::LineLevels, simulator::LinesOf;

constexpr LineLevels At(int port, std::uint8_t levels) {
  return {LinesOf(2 * port, 0xFF), LinesOf(2 * port, levels)};
}

constexpr LineLevels operator+(const LineLevels& one, const LineLevels& other) {
  return {one.lines | other.lines, one.levels | other.levels};
}

constexpr ConfigWordWiring kSmall6{At(0, 0x00), At(0, 0x20), At(0, 0x60)};
constexpr ConfigWordWiring kSmall8{At(0, 0x00), At(0, 0x01), At(0, 0x09)};
constexpr ConfigWordWiring kSmall8Kind2{At(0, 0x00), At(0, 0x02), At(0, 0x82)};
constexpr ConfigWordWiring kMedium14{At(1, 0x00), At(1, 0x0A), At(1, 0x0A) + At(0, 0x01)};
constexpr ConfigWordWiring kMedium14Mode22{At(1, 0x40), At(1, 0x00), At(1, 0x00) + At(0, 0x01)};
constexpr ConfigWordWiring kMedium20Mode40{At(0, 0x00) + At(1, 0x00) + At(2, 0x00), At(0, 0x40),
                                           At(0, 0x03)};
constexpr ConfigWordWiring kLarge{At(0, 0x00) + At(1, 0x00), At(1, 0x10), At(1, 0x14)};
constexpr ConfigWordWiring k28{At(0, 0x00) + At(1, 0x00) + At(3, 0x00), At(1, 0x20),
                               At(1, 0x20) + At(3, 0x04)};
constexpr ConfigWordWiring k28Mode5{At(0, 0x00) + At(1, 0x00) + At(3, 0x00), At(3, 0x08),
                                    At(3, 0x28)};
constexpr ConfigWordWiring k40{At(1, 0x00) + At(2, 0x00) + At(4, 0x00), At(2, 0x84),
                               At(2, 0x84) + At(4, 0x01)};
constexpr LineLevels kLow44 = At(0, 0x00) + At(2, 0x00) + At(3, 0x00) + At(5, 0x00);
constexpr ConfigWordWiring k44{kLow44, At(0, 0x00), At(0, 0x20)};
constexpr ConfigWordWiring k44Adapter{kLow44, At(3, 0x10) + At(2, 0x82),
                                      At(3, 0x10) + At(2, 0x82) + At(5, 0x08)};

}  // namespace

ConfigWordWiring ConfigWordWiringOf(const ConfigWordSocket& socket) {
  const auto is = [&socket](std::uint8_t mode, std::int16_t kind) {
    return socket.mode == mode && socket.kind == kind;
  };
  switch (socket.pins) {
    case 6:
      return kSmall6;
    case 8:
      return is(5, 2) ? kSmall8Kind2 : kSmall8;
    case 14:
      return socket.mode == 22 ? kMedium14Mode22 : kMedium14;
    case 20:
      return is(40, 1) ? kMedium20Mode40 : kLarge;
    case 18:
    case 64:
    case 68:
    case 80:
    case 84:
      return kLarge;
    case 28:
      return is(5, 5) ? k28Mode5 : k28;
    case 40:
      return k40;
    case 44:
      return socket.adapter ? k44Adapter : k44;
    default:
      throw std::invalid_argument("there is no socket for configuration words with " +
                                  std::to_string(socket.pins) + " pins");
  }
}

}  // namespace fliglaf
