// Parts programmed over a clock line and a data line for both ways.
#include <array>
#include <memory>

#include "devices/kinds/kinds.h"
#include "simulator/chips/two_wire_chip.h"

namespace fliglaf {
namespace {

using simulator::Lines;
using simulator::TwoWireWiring;

/// The family whose clock is pulled down over a line of its own for a reset pulse, and which cannot
/// read a signature.
constexpr std::uint8_t kFixed = 16;
constexpr std::uint8_t kFixedOption = 16;

constexpr std::uint8_t kOnAdapter = 23;  ///< the option with an adapter that has its own supply
constexpr std::uint8_t kFirstWithVpp = 30;

constexpr Lines P(int port, std::uint8_t mask) { return simulator::LinesOf(2 * port, mask); }

constexpr TwoWireWiring Wired(Lines clock, Lines data, Lines high, Lines low = 0,
                              Lines reset_enable = 0) {
  return {clock, 0, data, high | low, high, reset_enable};
}

// clang-format off
constexpr std::array kVariants = std::to_array<Variant<TwoWireWiring>>({
    //             clock       data        lines that are high
    {12, Wired(P(0, 0x08), P(0, 0x04), P(2, 0x10))},
    {13, Wired(P(1, 0x02), P(1, 0x01), P(0, 0x40))},
    {14, Wired(P(1, 0x04), P(1, 0x08), P(2, 0x08))},
    {15, Wired(P(1, 0x01), P(1, 0x02), P(2, 0x08))},
    {16, Wired(P(0, 0x10), P(0, 0x01), P(0, 0x80))},
    {17, Wired(P(0, 0x02), P(0, 0x04), P(1, 0x04))},
    {18, Wired(P(0, 0x01), P(0, 0x02), P(1, 0x08))},
    {19, Wired(P(1, 0x02), P(1, 0x04), P(1, 0x01))},
    {20, Wired(P(1, 0x02), P(1, 0x04), P(1, 0x01))},
    {21, Wired(P(1, 0x01), P(1, 0x02), P(2, 0x08))},
    {22, Wired(P(2, 0x01), P(2, 0x02), P(3, 0x02) | P(1, 0x01))},
    {23, Wired(P(1, 0x08), P(1, 0x10), P(3, 0x20) | P(2, 0x40) | P(0, 0x01))},
    {24, Wired(P(0, 0x20), P(0, 0x80), P(0, 0x02), P(0, 0x05))},
    {25, Wired(P(0, 0x20), P(0, 0x80), P(0, 0x01), P(0, 0x06))},
    {26, Wired(P(0, 0x01), P(0, 0x02), P(1, 0x02))},
    {27, Wired(P(3, 0x04), P(3, 0x40), P(2, 0x08))},
    {28, Wired(P(1, 0x08), P(1, 0x10), P(0, 0x04))},
    {29, Wired(P(1, 0x01), P(1, 0x40), P(1, 0x08))},
    {30, Wired(P(0, 0x20), P(0, 0x80), P(0, 0x02), P(0, 0x01), P(0, 0x04))},
    {31, Wired(P(1, 0x40), P(1, 0x04), P(0, 0x18))},
});
// clang-format on

constexpr TwoWireWiring kFixedWiring{
    .clock = P(1, 0x04), .clock_hold = P(2, 0x04), .data = P(1, 0x10), .routing = 0, .joined = 0};

bool IsFixed(const DeviceProfile& device) { return device.family == kFixed; }

const TwoWireWiring& WiringOf(const DeviceProfile& device) {
  return IsFixed(device) ? kFixedWiring : WiringFor(device.option, kVariants);
}

bool NeedsVpp(const DeviceProfile& device) {
  return !IsFixed(device) && device.option >= kFirstWithVpp;
}

std::vector<ConfigByte> ConfigBytes(const DeviceProfile& device) {
  return {{"lock", LayoutOf(device).config_start, 0xFF, true}};
}

bool FlashFits(const DeviceProfile& device) {
  return device.page > 0 && device.size % device.page == 0 && device.size >= 2 * device.page &&
         device.size <= 0x1'0000;
}

bool EndsInLastBlock(const DeviceProfile& device) {
  constexpr std::int32_t kBlock = 16'384;
  return device.range.last / kBlock == LayoutOf(device).main_bytes / kBlock;
}

// clang-format off
constexpr std::array kRules{
    ProfileRule{"option", [](D d) { return IsFixed(d) || (d.option >= 12 && d.option <= 31); }, "must be 12 to 31 in family 12"},
    ProfileRule{"option", [](D d) { return !IsFixed(d) || d.option == kFixedOption; }, "must be 16 in family 16"},
    ProfileRule{"vpp_pins", [](D d) { return !NeedsVpp(d) || !d.vpp_pins.empty(); }, "must be a pin with the options 30 and 31 of family 12"},
    ProfileRule{"signature", [](D d) { return !IsFixed(d) || !d.signature; }, "must be left out in family 16, which cannot read it"},
    ProfileRule{"image_bytes", ImageIsBytes, "must be 'size' in families 12 and 16, with 'address_bytes' 1"},
    ProfileRule{"page", [](D d) { return PageIsPowerOfTwo(d, 2, 512); }, "must be 2, 4, ... 512 in families 12 and 16, which read and write half a page at a time"},
    ProfileRule{"size", FlashFits, "must be a number of whole pages, two or more, up to 65536 in families 12 and 16"},
    ProfileRule{"range", EndsInLastBlock, "must end in the last 16384 bytes, or what there is of them, of the flash below the last page in families 12 and 16, which read up to there"},
};
// clang-format on

/// The pins of the device, and those of the adapter.
simulator::SupplyPins Supply(const DeviceProfile& device) {
  simulator::SupplyPins supply = SupplyOf(device);
  if (!IsFixed(device) && device.option == kOnAdapter) {
    supply.vcc.push_back(0x77);
    supply.gnd.insert(supply.gnd.end(), {0x76, 0x13});
  }
  return supply;
}

simulator::Part MakePart(const DeviceProfile& device, const simulator::Clock& clock) {
  return {.chip = std::make_unique<simulator::TwoWireChip>(
              clock, WiringOf(device), SiliconOf(device),
              simulator::TwoWireChip::Features{.needs_vpp = NeedsVpp(device)}),
          .supply = Supply(device)};
}

}  // namespace

constinit const DeviceKind kTwoWire{
    .rules = kRules, .config_bytes = ConfigBytes, .reads_config = true, .make_part = MakePart};

}  // namespace fliglaf
