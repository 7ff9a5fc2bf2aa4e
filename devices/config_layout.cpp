#include "devices/config_layout.h"

#include <array>

#include "devices/memory_layout.h"

namespace fliglaf {
namespace {

constexpr std::uint8_t kOneFuseByte = 14;

/// Lock bits of the page families: two for the memory, up to four for a boot section. Bit 1 always
/// reads as 1 here.
constexpr std::uint8_t kLockBits = 0x3D;

constexpr std::array kOneFuseHazards{
    ConfigHazard{"low", 5, true, "SPIEN", "turns serial programming off"},
};
constexpr std::array kTwoFuseHazards{
    ConfigHazard{"high", 5, true, "SPIEN", "turns serial programming off"},
    ConfigHazard{"high", 6, false, "DWEN", "makes the reset line a debug wire"},
    ConfigHazard{"high", 7, false, "RSTDISBL", "turns the reset line off"},
};
constexpr std::array kFramedHazards{
    ConfigHazard{"fuse", 0, true, "ISP Enable", "turns serial programming off"},
};

std::vector<ConfigByte> PageFamilyBytes(const DeviceProfile& device) {
  const std::int64_t start = LayoutOf(device).config_start;
  const bool one_fuse = device.family == 13 && device.option == kOneFuseByte;
  std::vector<ConfigByte> bytes;
  bytes.push_back({"low", start, static_cast<std::uint8_t>(one_fuse ? 0x7F : 0xFF), true});
  if (!one_fuse) {
    bytes.push_back({"calibration", start + 1, 0xFF, false});
    bytes.push_back({"high", start + 2, 0xFF, true});
  }
  bytes.push_back({"lock", start + 3, kLockBits, true});
  if (device.family == 14) bytes.push_back({"extended", start + 4, 0xFF, true});
  return bytes;
}

/// Bit 6 of the high fuses, which keeps the interface open, is not the user's to choose.
std::vector<ConfigByte> AvrJtagBytes(const DeviceProfile& device) {
  const std::int64_t start = LayoutOf(device).config_start;
  std::vector<ConfigByte> bytes{{"low", start, 0xFF, true},
                                {"calibration", start + 1, 0xFF, false},
                                {"high", start + 2, 0xBF, true},
                                {"lock", start + 3, 0x3F, true}};
  if (device.option != 6) bytes.push_back({"extended", start + 4, 0xFF, true});
  return bytes;
}

/// The two bytes behind the main memory. Family 11 has no operation that writes them.
std::vector<ConfigByte> FlashRegisterBytes(const DeviceProfile& device) {
  const std::int64_t start = LayoutOf(device).config_start;
  return {{"write-lock", start, 0xFF, true}, {"read-lock", start + 1, 0xFF, true}};
}

/// Words of 14 bits, the last of them at image byte 16398.
std::vector<ConfigByte> ConfigWordBytes(const DeviceProfile& device) {
  constexpr std::uint8_t kHighBits = 0x3F;
  if (device.config_words == 1) {
    return {{"low", 16398, 0xFF, true}, {"high", 16399, kHighBits, true}};
  }
  return {{"low0", 16396, 0xFF, true},
          {"high0", 16397, kHighBits, true},
          {"low1", 16398, 0xFF, true},
          {"high1", 16399, kHighBits, true}};
}

bool IsFlashRegister(const DeviceProfile& device) {
  return device.family >= 8 && device.family <= 11;
}

bool IsAvrJtag(const DeviceProfile& device) { return device.family >= 4 && device.family <= 7; }

}  // namespace

std::vector<ConfigByte> ConfigBytesOf(const DeviceProfile& device) {
  if (device.config_words > 0) return ConfigWordBytes(device);
  if (IsAvrJtag(device)) return AvrJtagBytes(device);
  if (IsFlashRegister(device)) return FlashRegisterBytes(device);
  switch (device.family) {
    case 13:
    case 14:
      return PageFamilyBytes(device);
    case 12:
    case 16:
      return {{"lock", LayoutOf(device).config_start, 0xFF, true}};
    case 15: {
      const std::int64_t start = LayoutOf(device).config_start;
      return {{"fuse", start, 0x0F, true}, {"lock", start + 1, 0x03, true}};
    }
    default:
      return {};
  }
}

bool ReadsConfig(const DeviceProfile& device) { return device.family >= 4 && device.family != 15; }

std::span<const ConfigHazard> ConfigHazardsOf(const DeviceProfile& device) {
  switch (device.family) {
    case 13:
    case 14:
      if (device.option == kOneFuseByte) return kOneFuseHazards;
      return kTwoFuseHazards;
    case 15:
      return kFramedHazards;
    default:
      return {};
  }
}

}  // namespace fliglaf
