#include "host/factory_settings.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>

#include "image_layout/image_layout.h"

namespace fliglaf {
namespace {

/// Bytes from the first configuration byte to the end of the image, and one more.
constexpr std::int64_t kAreaBytes = 33;

/// Fuses as the parts with one of `options` leave the factory.
struct Fuses {
  std::initializer_list<std::uint8_t> options;  ///< quorinwoption(0)
  std::uint8_t low;
  std::uint8_t calibration;
  std::uint8_t high;
  std::uint8_t extended;
};
// clang-format off
constexpr Fuses kFactoryFuses[] = {
    // options       low   cal   high  ext
    {{4, 7, 8, 9},   0x62, 0x00, 0x99, 0xFF},
    {{5, 6},         0xE1, 0x00, 0x99, 0xFD},
    {{10},           0xCD, 0x00, 0xFE, 0xFF},
    {{11, 12, 13},   0xE1, 0x00, 0xD9, 0xFF},
    {{14},           0xDA, 0xFF, 0xFF, 0xFF},
    {{15, 16},       0x62, 0xFF, 0xDF, 0xFF},
};
// clang-format on

std::int64_t ConfigStart(const SharedVariables& vars) {
  return LayoutOf(vars.quorinprgmode[0], SizesOf(vars)).config_start;
}

void PresetFuses(SharedVariables& vars) {
  const auto area = vars.quorinibuffer.Range(ConfigStart(vars), kAreaBytes);
  std::ranges::fill(area, std::uint8_t{0xFF});
  for (const Fuses& fuses : kFactoryFuses) {
    if (std::ranges::find(fuses.options, vars.quorinwoption[0]) == fuses.options.end()) continue;
    area[fuse_byte::kLow] = fuses.low;
    area[fuse_byte::kCalibration] = fuses.calibration;
    area[fuse_byte::kHigh] = fuses.high;
    area[fuse_byte::kExtended] = fuses.extended;
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
