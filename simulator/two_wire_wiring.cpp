#include "simulator/two_wire_wiring.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>

namespace fliglaf::simulator {
namespace {

constexpr Lines P(int port, std::uint8_t mask) { return LinesOf(2 * port, mask); }

constexpr TwoWireWiring Wired(Lines clock, Lines data, Lines high, Lines low = 0,
                              Lines reset_enable = 0) {
  return {clock, 0, data, high | low, high, reset_enable};
}

struct Variant {
  std::uint8_t option;
  TwoWireWiring wiring;
};

// clang-format off
constexpr std::array kFamily12{
    //             clock       data        lines that are high
    Variant{12, Wired(P(0, 0x08), P(0, 0x04), P(2, 0x10))},
    Variant{13, Wired(P(1, 0x02), P(1, 0x01), P(0, 0x40))},
    Variant{14, Wired(P(1, 0x04), P(1, 0x08), P(2, 0x08))},
    Variant{15, Wired(P(1, 0x01), P(1, 0x02), P(2, 0x08))},
    Variant{16, Wired(P(0, 0x10), P(0, 0x01), P(0, 0x80))},
    Variant{17, Wired(P(0, 0x02), P(0, 0x04), P(1, 0x04))},
    Variant{18, Wired(P(0, 0x01), P(0, 0x02), P(1, 0x08))},
    Variant{19, Wired(P(1, 0x02), P(1, 0x04), P(1, 0x01))},
    Variant{20, Wired(P(1, 0x02), P(1, 0x04), P(1, 0x01))},
    Variant{21, Wired(P(1, 0x01), P(1, 0x02), P(2, 0x08))},
    Variant{22, Wired(P(2, 0x01), P(2, 0x02), P(3, 0x02) | P(1, 0x01))},
    Variant{23, Wired(P(1, 0x08), P(1, 0x10), P(3, 0x20) | P(2, 0x40) | P(0, 0x01))},
    Variant{24, Wired(P(0, 0x20), P(0, 0x80), P(0, 0x02), P(0, 0x05))},
    Variant{25, Wired(P(0, 0x20), P(0, 0x80), P(0, 0x01), P(0, 0x06))},
    Variant{26, Wired(P(0, 0x01), P(0, 0x02), P(1, 0x02))},
    Variant{27, Wired(P(3, 0x04), P(3, 0x40), P(2, 0x08))},
    Variant{28, Wired(P(1, 0x08), P(1, 0x10), P(0, 0x04))},
    Variant{29, Wired(P(1, 0x01), P(1, 0x40), P(1, 0x08))},
    Variant{30, Wired(P(0, 0x20), P(0, 0x80), P(0, 0x02), P(0, 0x01), P(0, 0x04))},
    Variant{31, Wired(P(1, 0x40), P(1, 0x04), P(0, 0x18))},
};
// clang-format on

constexpr TwoWireWiring kFamily16{
    .clock = P(1, 0x04), .clock_hold = P(2, 0x04), .data = P(1, 0x10), .routing = 0, .joined = 0};
constexpr std::uint8_t kFamily16Option = 16;

}  // namespace

TwoWireWiring TwoWireWiringOf(std::uint8_t family, std::uint8_t option) {
  if (family == 16 && option == kFamily16Option) return kFamily16;
  const auto found = std::ranges::find(kFamily12, option, &Variant::option);
  if (family == 12 && found != kFamily12.end()) return found->wiring;
  throw std::invalid_argument("no chip of family " + std::to_string(family) +
                              " is wired for option " + std::to_string(option));
}

}  // namespace fliglaf::simulator
