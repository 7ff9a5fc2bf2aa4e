// AVR parts programmed over JTAG.
#include <array>
#include <memory>

#include "devices/kinds/kinds.h"
#include "simulator/chips/avr_jtag_chip.h"

namespace fliglaf {
namespace {

/// Variant with two fuse bytes; the others have an extended one, too.
constexpr std::uint8_t kTwoFuseBytes = 6;

bool HasExtendedFuses(const DeviceProfile& device) { return device.option != kTwoFuseBytes; }

/// Bit 6 of the high fuses, which keeps the interface open, is not the user's to choose.
std::vector<ConfigByte> ConfigBytes(const DeviceProfile& device) {
  const std::int64_t start = LayoutOf(device).config_start;
  std::vector<ConfigByte> bytes{{"low", start, 0xFF, true},
                                {"calibration", start + 1, 0xFF, false},
                                {"high", start + 2, 0xBF, true},
                                {"lock", start + 3, 0x3F, true}};
  if (HasExtendedFuses(device)) bytes.push_back({"extended", start + 4, 0xFF, true});
  return bytes;
}

/// Of flash, which is read block by block.
bool WholeBlocks(const DeviceProfile& device) {
  constexpr std::int32_t kBlock = 16'384;
  constexpr std::int32_t kLargest = 131'072;  // 16 address bits, words
  const std::int64_t bytes = LayoutOf(device).main_bytes;
  return bytes >= kBlock && bytes <= kLargest && bytes % kBlock == 0;
}

// clang-format off
constexpr std::array kRules{
    ProfileRule{"option", [](D d) { return d.option >= 4 && d.option <= 8; }, "must be 4 to 8 in families 4 to 7"},
    ProfileRule{"image_bytes", ImageIsWords, "must be twice 'size' in families 4 to 7, with 'address_bytes' 2"},
    ProfileRule{"data_size", [](D d) { return LayoutOf(d).data_bytes <= kOneTransfer; }, "cannot be more than 8192 words in families 4 to 7, which read the EEPROM in one transfer"},
    ProfileRule{"size", WholeBlocks, "must be the flash words, those of the EEPROM, and 16 in families 4 to 7, which read the flash in blocks of 8192 words: 1 to 8 of them"},
    ProfileRule{"page", [](D d) { return PageIsPowerOfTwo(d, 16, 256); }, "must be 16, 32, ... 256 words in families 4 to 7"},
};
// clang-format on

/// The parts of family 4 take a page byte by byte, those of the others in one long register.
simulator::Part MakePart(const DeviceProfile& device, const simulator::Clock& clock) {
  return {.chip = std::make_unique<simulator::AvrJtagChip>(
              clock, simulator::kJtagWiring, SiliconOf(device),
              simulator::AvrJtagChip::Features{.long_page_register = device.family != 4,
                                               .extended_fuses = HasExtendedFuses(device)}),
          .supply = SupplyOf(device),
          .jtag = &simulator::kJtagWiring};
}

}  // namespace

constinit const DeviceKind kAvrJtag{
    .rules = kRules, .config_bytes = ConfigBytes, .reads_config = true, .make_part = MakePart};

}  // namespace fliglaf
