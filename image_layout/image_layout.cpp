#include "image_layout/image_layout.h"

#include <algorithm>
#include <array>

#include "image_layout/rounding.h"

namespace fliglaf {
namespace {

/// At the end of the size, kept for the configuration: words of the word families, bytes of
/// family 15.
constexpr std::int64_t kConfigWords = 16;
constexpr std::int64_t kConfigBytes = 32;

/// The data memory lies right behind the main memory.
constexpr ImageLayout DataBehind(std::int64_t main_bytes, std::int64_t data_bytes) {
  return {.main_bytes = main_bytes, .data_start = main_bytes, .data_bytes = data_bytes};
}

ImageLayout MainOnly(const ImageSizes& sizes) { return DataBehind(sizes.size, 0); }

ImageLayout DataInBytes(const ImageSizes& sizes) {
  return DataBehind(sizes.size - sizes.data_size, sizes.data_size);
}

/// Two bytes of the data memory take the place of a word.
ImageLayout WordsAndSmallData(const ImageSizes& sizes) {
  const std::int64_t bytes = 2 * (sizes.size - kConfigWords) - sizes.data_size;
  return DataBehind(2 * DivideToEven(bytes, 2), sizes.data_size);
}

ImageLayout WithFuses(const ImageSizes& sizes, std::int64_t data_bytes) {
  ImageLayout layout = DataBehind(2 * (sizes.size - sizes.data_size - kConfigWords), data_bytes);
  layout.config = ConfigArea::kFuses;
  layout.config_start = 2 * (sizes.size - kConfigWords);
  return layout;
}

/// A word of the data memory takes the place of a word of the flash.
ImageLayout WordsAndDataInWords(const ImageSizes& sizes) {
  return WithFuses(sizes, 2 * sizes.data_size);
}

/// A byte of the data memory takes the place of a word of the flash.
ImageLayout WordsAndDataInBytes(const ImageSizes& sizes) {
  return WithFuses(sizes, sizes.data_size);
}

ImageLayout BlocksAndSecondArea(const ImageSizes& sizes) {
  const std::int64_t locks = BlockLocksStart(sizes);
  return {.main_bytes = locks,
          .data_start = sizes.size - sizes.data_size,
          .data_bytes = sizes.data_size,
          .config = ConfigArea::kBlockLocks,
          .config_start = locks};
}

/// The last byte of the array is its lock byte; a page that is not programmed lies above.
ImageLayout ArrayWithLockByte(const ImageSizes& sizes) {
  ImageLayout layout = DataBehind(sizes.size - sizes.page - 1, 0);
  layout.config = ConfigArea::kLockByte;
  layout.config_start = layout.main_bytes;
  return layout;
}

ImageLayout CodeAndConfig(const ImageSizes& sizes) {
  ImageLayout layout = DataBehind(sizes.size - kConfigBytes, 0);
  layout.config = ConfigArea::kFuseAndLock;
  layout.config_start = layout.main_bytes;
  return layout;
}

struct FamilyImage {
  std::uint8_t family;
  ImageLayout (*layout)(const ImageSizes&);
  ConfigPage page{};
};

constexpr ConfigPage kFuses{ConfigArea::kFuses, true};
constexpr ConfigPage kFusesWithoutExtended{ConfigArea::kFuses, false};
constexpr ConfigPage kBlockLocks{ConfigArea::kBlockLocks};

constexpr std::array kFamilies{
    FamilyImage{1, MainOnly},
    FamilyImage{2, DataInBytes},
    FamilyImage{3, WordsAndSmallData},
    FamilyImage{4, WordsAndDataInWords, kFuses},
    FamilyImage{5, WordsAndDataInWords, kFuses},
    FamilyImage{6, WordsAndDataInWords, kFuses},
    FamilyImage{7, WordsAndDataInWords, kFuses},
    FamilyImage{8, BlocksAndSecondArea, kBlockLocks},
    FamilyImage{9, BlocksAndSecondArea, kBlockLocks},
    FamilyImage{10, BlocksAndSecondArea, kBlockLocks},
    FamilyImage{11, BlocksAndSecondArea, kBlockLocks},
    FamilyImage{12, ArrayWithLockByte, {ConfigArea::kLockByte}},
    FamilyImage{13, WordsAndDataInBytes, kFusesWithoutExtended},
    FamilyImage{14, WordsAndDataInBytes, kFuses},
    FamilyImage{15, CodeAndConfig, {ConfigArea::kFuseAndLock}},
    FamilyImage{16, ArrayWithLockByte},  // without a page in the editors
};

constexpr FamilyImage kNoFamily{0, MainOnly};

const FamilyImage& RowOf(std::uint8_t family) {
  const auto found = std::ranges::find(kFamilies, family, &FamilyImage::family);
  return found == kFamilies.end() ? kNoFamily : *found;
}

}  // namespace

ImageSizes SizesOf(const SharedVariables& vars) {
  return {.size = vars.quorintlength[0],
          .data_size = vars.quorinbvcch[0],
          .page = vars.quorinpagelength[0]};
}

ImageLayout LayoutOf(std::uint8_t family, const ImageSizes& sizes) {
  return RowOf(family).layout(sizes);
}

std::int64_t BlockLocksStart(const ImageSizes& sizes) {
  return sizes.size - sizes.data_size - sizes.page - 2;
}

ConfigPage ConfigPageOf(std::uint8_t family) { return RowOf(family).page; }

}  // namespace fliglaf
