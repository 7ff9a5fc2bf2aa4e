#include "host/factory_settings.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>

#include "image_layout/image_layout.h"

namespace fliglaf {
namespace {

/// Bytes from the first configuration byte to the end of the image, and one more.
constexpr std::int64_t kAreaBytes = 33;

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

std::int64_t ConfigStart(const SharedVariables& vars) {
  return LayoutOf(vars.quorinprgmode[0], SizesOf(vars)).config_start;
}

void PresetFuses(SharedVariables& vars) {
  const auto area = vars.quorinibuffer.Range(ConfigStart(vars), kAreaBytes);
  std::ranges::fill(area, std::uint8_t{0xFF});
  for (const Fuses& fuses : kFactoryFuses) {
    if (std::ranges::find(fuses.variants, vars.quorinwoption[0]) == fuses.variants.end()) continue;
    area[0] = fuses.low;
    area[1] = fuses.calibration;
    area[2] = fuses.high;
    area[4] = fuses.extended;
  }
}

void PresetBlockLocks(SharedVariables& vars) {
  const auto locks = vars.quorinibuffer.Range(BlockLocksStart(SizesOf(vars)), 2);
  std::ranges::fill(locks, std::uint8_t{0xFF});
}

void PresetFuseAndLock(SharedVariables& vars) {
  const auto area = vars.quorinibuffer.Range(ConfigStart(vars), kAreaBytes);
  std::ranges::fill(area, std::uint8_t{0xFF});
  area[0] = 0xFE;
}

}  // namespace

void PresetConfiguration(SharedVariables& vars) {
  switch (ConfigPageOf(vars.quorinprgmode[0]).area) {
    case ConfigArea::kFuses:
      return PresetFuses(vars);
    case ConfigArea::kBlockLocks:
    case ConfigArea::kLockByte:  // presets where block locks would be, not the lock byte
      return PresetBlockLocks(vars);
    case ConfigArea::kFuseAndLock:
      return PresetFuseAndLock(vars);
    case ConfigArea::kNone:
      return;
  }
}

}  // namespace fliglaf
