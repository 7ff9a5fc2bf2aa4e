// Parts programmed through indirect flash registers behind their test access port.
#include <array>
#include <memory>

#include "devices/kinds/kinds.h"
#include "simulator/chips/flash_register_chip.h"

namespace fliglaf {
namespace {

using simulator::LinesOf;

/// Variant with register set B, whose addresses have 17 bits.
constexpr std::uint8_t kWide = 15;

constexpr simulator::Lines kRouting22 = LinesOf(2, 0x08) | LinesOf(0, 0x02);
constexpr simulator::Lines kRouting23 = LinesOf(0, 0x09) | LinesOf(2, 0xA0) | LinesOf(6, 0x01);
constexpr simulator::Lines kRouting24 = LinesOf(2, 0x40) | LinesOf(4, 0x02) | LinesOf(6, 0x04);

// clang-format off
/// How the port is wired to the socket. All levels of the routing are high.
constexpr std::array kVariants = std::to_array<Variant<simulator::JtagWiring>>({
    //          TCK               TMS               TDI               TDO               routing
    {11, simulator::kJtagWiring},
    {12, simulator::kJtagWiring},
    {13, simulator::kJtagWiring},
    {14, simulator::kJtagWiring},
    {15, simulator::kJtagWiring},
    {22, {LinesOf(2, 0x10), LinesOf(2, 0x20), LinesOf(2, 0x80), LinesOf(2, 0x40), kRouting22, kRouting22}},
    {23, {LinesOf(0, 0x20), LinesOf(0, 0x10), LinesOf(0, 0x40), LinesOf(0, 0x80), kRouting23, kRouting23}},
    {24, {LinesOf(0, 0x10), LinesOf(0, 0x20), LinesOf(0, 0x80), LinesOf(0, 0x40), kRouting24, kRouting24}},
});
// clang-format on

/// Families 10 and 11 give the second area addresses of its own.
bool SecondApart(const DeviceProfile& device) { return device.family >= 10; }

/// The two bytes behind the main memory. Family 11 has no operation that writes them.
std::vector<ConfigByte> ConfigBytes(const DeviceProfile& device) {
  const std::int64_t start = LayoutOf(device).config_start;
  return {{"write-lock", start, 0xFF, true}, {"read-lock", start + 1, 0xFF, true}};
}

bool HasLines(const DeviceProfile& device) {
  return (device.option >= 11 && device.option <= 15) ||
         (device.option >= 22 && device.option <= 24);
}

bool MainIsWholePages(const DeviceProfile& device) {
  return device.page > 0 && LayoutOf(device).main_bytes > 0 &&
         (device.size - device.data_size) % device.page == 0;
}

bool AddressesReach(const DeviceProfile& device) {
  const std::int32_t reach = device.option == kWide ? 0x2'0000 : 0x1'0000;
  return device.size - (SecondApart(device) ? device.data_size : 0) <= reach;
}

// clang-format off
constexpr std::array kRules{
    ProfileRule{"option", HasLines, "must be 11 to 15 or 22 to 24 in families 8 to 11"},
    ProfileRule{"option", [](D d) { return d.family != 8 || d.option != kWide; }, "must be 11 to 14 or 22 to 24 in family 8, which writes addresses of 16 bits"},
    ProfileRule{"option", [](D d) { return d.family != 9 || d.option != kWide; }, "must be 11 to 14 or 22 to 24 in family 9, which writes addresses of 16 bits"},
    ProfileRule{"image_bytes", ImageIsBytes, "must be 'size' in families 8 to 11, with 'address_bytes' 1"},
    ProfileRule{"size", MainIsWholePages, "must be two pages or more, besides 'data_size', in families 8 to 11, the last but one with the lock bytes"},
    ProfileRule{"size", AddressesReach, "must be up to 65536 in families 8 and 9, as in 10 and 11 without 'data_size'; with option 15 these have up to 131072"},
    ProfileRule{"size", [](D d) { return d.family != 9 || LayoutOf(d).main_bytes <= kOneTransfer; }, "makes more than 16384 bytes of main array; family 9 reads it in one transfer, which holds no more"},
    ProfileRule{"data_size", [](D d) { return d.data_size <= kOneTransfer; }, "cannot be more than 16384 in families 8 to 11, which read the second area in one transfer"},
    ProfileRule{"data_size", [](D d) { return d.data_size <= d.page; }, "cannot be more than 'page' in families 8 to 11, which erase the second area as one page"},
};
// clang-format on

simulator::Part MakePart(const DeviceProfile& device, const simulator::Clock& clock) {
  const simulator::JtagWiring& wiring = WiringFor(device.option, kVariants);
  return {.chip = std::make_unique<simulator::FlashRegisterChip>(
              clock, wiring, SiliconOf(device),
              simulator::FlashRegisterChip::Features{.second_apart = SecondApart(device),
                                                     .wide = device.option == kWide}),
          .supply = SupplyOf(device),
          .jtag = &wiring};
}

}  // namespace

constinit const DeviceKind kFlashRegister{
    .rules = kRules, .config_bytes = ConfigBytes, .reads_config = true, .make_part = MakePart};

}  // namespace fliglaf
