// AVR parts with a page buffer, EEPROM and one to three fuse bytes, programmed serially.
#include <array>
#include <memory>

#include "devices/kinds/kinds.h"
#include "simulator/chips/serial_page_chip.h"

namespace fliglaf {
namespace {

/// Lock bits: two for the memory, up to four for a boot section. Bit 1 always reads as 1 here.
constexpr std::uint8_t kLockBits = 0x3D;

constexpr std::array kOneFuseHazards{
    ConfigHazard{"low", 5, true, "SPIEN", "turns serial programming off"},
};
constexpr std::array kHazards{
    ConfigHazard{"high", 5, true, "SPIEN", "turns serial programming off"},
    ConfigHazard{"high", 6, false, "DWEN", "makes the reset line a debug wire"},
    ConfigHazard{"high", 7, false, "RSTDISBL", "turns the reset line off"},
};

/// 1 to 3: low, high, extended.
std::size_t FuseBytes(const DeviceProfile& device) {
  constexpr std::uint8_t kOneFuseByte = 14;
  if (device.family == 14) return 3;
  return device.option == kOneFuseByte ? 1 : 2;
}

std::vector<ConfigByte> ConfigBytes(const DeviceProfile& device) {
  const std::int64_t start = LayoutOf(device).config_start;
  const std::size_t fuses = FuseBytes(device);
  std::vector<ConfigByte> bytes;
  bytes.push_back({"low", start, static_cast<std::uint8_t>(fuses == 1 ? 0x7F : 0xFF), true});
  if (fuses > 1) {
    bytes.push_back({"calibration", start + 1, 0xFF, false});
    bytes.push_back({"high", start + 2, 0xFF, true});
  }
  bytes.push_back({"lock", start + 3, kLockBits, true});
  if (fuses > 2) bytes.push_back({"extended", start + 4, 0xFF, true});
  return bytes;
}

std::span<const ConfigHazard> Hazards(const DeviceProfile& device) {
  if (FuseBytes(device) == 1) return kOneFuseHazards;
  return kHazards;
}

// clang-format off
constexpr std::array kRules{
    ProfileRule{"option", [](D d) { return d.option == 14 || d.option == 15; }, "must be 14 or 15 in families 13 and 14"},
    ProfileRule{"image_bytes", ImageIsWords, "must be twice 'size' in families 13 and 14, with 'address_bytes' 2"},
    ProfileRule{"data_size", [](D d) { return LayoutOf(d).data_bytes <= kOneTransfer; }, "cannot be more than 16384 in families 13 and 14, which read the EEPROM in one transfer"},
    ProfileRule{"size", [](D d) { return LayoutOf(d).main_bytes > 0; }, "must be the flash words, one more for each EEPROM byte of 'data_size', and 16 in families 13 and 14"},
    ProfileRule{"size", [](D d) { return LayoutOf(d).main_bytes <= kOneTransfer; }, "makes more than 8192 words of flash; families 13 and 14 read it in one transfer, which holds no more than these 16384 bytes"},
    ProfileRule{"page", [](D d) { return PageIsPowerOfTwo(d, 1, 256); }, "must be 1, 2, 4, ... 256 words in families 13 and 14"},
    ProfileRule{"page", FlashIsWholePages, "must divide the flash into whole pages in families 13 and 14"},
    ProfileRule{"retries", [](D d) { return d.retries >= 1; }, "must be 1 or more in families 13 and 14, the attempts at the programming enable"},
};
// clang-format on

simulator::Part MakePart(const DeviceProfile& device, const simulator::Clock& clock) {
  return {.chip = std::make_unique<simulator::SerialPageChip>(
              clock, SiliconOf(device),
              simulator::SerialPageChip::Features{.fuse_bytes = FuseBytes(device)}),
          .supply = SupplyOf(device)};
}

}  // namespace

constinit const DeviceKind kSerialPage{.rules = kRules,
                                       .config_bytes = ConfigBytes,
                                       .hazards = Hazards,
                                       .reads_config = true,
                                       .make_part = MakePart};

}  // namespace fliglaf
