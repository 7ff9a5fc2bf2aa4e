// Where the memories and the configuration of a device lie in its image, by device family.
#pragma once

#include <cstdint>

#include "shared/shared_variables.h"

namespace fliglaf {

/// The sizes that the host gives for a device's memories, in the unit in which its family counts: words of two
/// bytes in families 3 to 7, 13 and 14, bytes in the others.
struct ImageSizes {
  std::int64_t size = 0;       ///< of all that the image has: quorintlength(0)
  std::int64_t data_size = 0;  ///< of the data memory or the second area: quorinbvcch(0)
  std::int64_t page = 0;       ///< quorinpagelength(0)
};

[[nodiscard]] ImageSizes SizesOf(const SharedVariables& vars);

/// What the configuration bytes of a family are.
enum class ConfigArea : std::uint8_t {
  kNone,
  kFuses,        ///< the bytes of fuse_byte
  kBlockLocks,   ///< two bytes that protect the flash in eight blocks: write and erase, read
  kLockByte,     ///< one byte that protects the flash from its end down
  kFuseAndLock,  ///< fuse bits, lock bits
};

/// Where the bytes of ConfigArea::kFuses lie, counted from the first of them.
namespace fuse_byte {
inline constexpr int kLow = 0;
inline constexpr int kCalibration = 1;
inline constexpr int kHigh = 2;
inline constexpr int kLock = 3;
inline constexpr int kExtended = 4;
}  // namespace fuse_byte

/// Indexes and lengths in bytes of the image. The main memory begins at 0. Wrong sizes from the
/// host give negative lengths.
struct ImageLayout {
  std::int64_t main_bytes = 0;
  std::int64_t data_start = 0;
  std::int64_t data_bytes = 0;
  ConfigArea config = ConfigArea::kNone;
  std::int64_t config_start = 0;
};

/// The layout of a family; for a code without a family all of the size is main memory.
[[nodiscard]] ImageLayout LayoutOf(std::uint8_t family, const ImageSizes& sizes);

/// Where the lock bytes of the blocks of a flash lie: between the main array and the page below the
/// second area.
[[nodiscard]] std::int64_t BlockLocksStart(const ImageSizes& sizes);

/// What the editors and the factory presets know of a family.
struct ConfigPage {
  ConfigArea area = ConfigArea::kNone;
  bool has_extended_fuses = false;
};
[[nodiscard]] ConfigPage ConfigPageOf(std::uint8_t family);

}  // namespace fliglaf
