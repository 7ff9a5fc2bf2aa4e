#include "host/factory_settings.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>

namespace fliglaf {
namespace {

/// Bytes from the first configuration byte to the end of the image, and one more.
constexpr std::int64_t kAreaBytes = 33;
/// The first configuration byte lies this far below the end of the image.
constexpr std::int64_t kAreaStart = 32;

struct Fuses {
  std::initializer_list<std::uint8_t> variants;
  std::uint8_t low;          ///< byte 0 of the area
  std::uint8_t calibration;  ///< byte 1
  std::uint8_t high;         ///< byte 2
  std::uint8_t extended;     ///< byte 4
};

/// Fuses as the parts leave the factory, by quorinwoption(0).
// clang-format off
constexpr std::initializer_list<std::uint8_t> kVariants[] = {
  {4, 7, 8, 9}, {5, 6}, {10}, {11, 12, 13}, {14}, {15, 16}};
constexpr std::array kFactoryFuses{
  //    variants      low   cal   high  ext
  Fuses{kVariants[0], 0x62, 0x00, 0x99, 0xFF},
  Fuses{kVariants[1], 0xE1, 0x00, 0x99, 0xFD},
  Fuses{kVariants[2], 0xCD, 0x00, 0xFE, 0xFF},
  Fuses{kVariants[3], 0xE1, 0x00, 0xD9, 0xFF},
  Fuses{kVariants[4], 0xDA, 0xFF, 0xFF, 0xFF},
  Fuses{kVariants[5], 0x62, 0xFF, 0xDF, 0xFF},
};
// clang-format on

void PresetFuses(SharedVariables& vars) {
  const auto area =
      vars.quorinibuffer.Range(std::int64_t{vars.quorintlength[0]} * 2 - kAreaStart, kAreaBytes);
  std::ranges::fill(area, std::uint8_t{0xFF});
  for (const Fuses& fuses : kFactoryFuses) {
    if (std::ranges::find(fuses.variants, vars.quorinwoption[0]) == fuses.variants.end()) continue;
    area[0] = fuses.low;
    area[1] = fuses.calibration;
    area[2] = fuses.high;
    area[4] = fuses.extended;
  }
}

/// The two lock bytes between the main array and its last page.
void PresetFlashLock(SharedVariables& vars) {
  const std::int64_t first =
      std::int64_t{vars.quorintlength[0]} - vars.quorinbvcch[0] - vars.quorinpagelength[0] - 2;
  std::ranges::fill(vars.quorinibuffer.Range(first, 2), std::uint8_t{0xFF});
}

void PresetFuseAndLock(SharedVariables& vars) {
  const auto area =
      vars.quorinibuffer.Range(std::int64_t{vars.quorintlength[0]} - kAreaStart, kAreaBytes);
  std::ranges::fill(area, std::uint8_t{0xFF});
  area[0] = 0xFE;
}

}  // namespace

void PresetConfiguration(SharedVariables& vars) {
  switch (vars.quorinprgmode[0]) {
    case 4:
    case 5:
    case 6:
    case 7:
    case 13:
    case 14:
      return PresetFuses(vars);
    case 8:
    case 9:
    case 10:
    case 11:
    case 12:
      return PresetFlashLock(vars);
    case 15:
      return PresetFuseAndLock(vars);
    default:
      return;
  }
}

}  // namespace fliglaf
