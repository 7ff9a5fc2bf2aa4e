// The captions of the fuse and lock editor, and what it hides and disables, by device variant.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

namespace fliglaf {

/// Captions that several variants share, bit 0 first; empty for bits that all of them hide.
struct FuseCaptions {
  std::array<std::u16string_view, 8> low;
  std::array<std::u16string_view, 8> high;
  std::array<std::u16string_view, 5> extended;
};

// clang-format off
inline constexpr FuseCaptions kGroupA{
    {u"CKSEL0:", u"CKSEL1:", u"CKSEL2:", u"CKSEL3:", u"SUT0:", u"SUT1:", u"CKOUT:", u"CKDIV8:"},
    {u"BOOTRST:", u"BOOTSZ0:", u"BOOTSZ1:", u"EESAVE:", u"WDTON:", u"SPIEN:", u"JTAGEN:", u"OCDEN:"},
    {u"RSTDISBL:", u"BODLEVEL0:", u"BODLEVEL1:", u"BODLEVEL2:", u"M161C"}};
inline constexpr FuseCaptions kGroupB{
    {u"CKSEL0:", u"CKSEL1:", u"CKSEL2:", u"CKSEL3:", u"SUT0:", u"SUT1:", u"BODEN:", u"BODLEVEL:"},
    {u"BOOTRST:", u"BOOTSZ0:", u"BOOTSZ1:", u"EESAVE:", u"CKOPT:", u"SPIEN:", u"JTAGEN:", u"OCDEN:"},
    {u"WDTON:", u"M103C:"}};
inline constexpr FuseCaptions kGroupC{
    {u"CKSEL:", u"CUT0:", u"CUT1:", u"BOOTRST:", u"BOOTSZ0:", u"BOOTSZ1:", u"EESAVE:", u"WDTON:"},
    {u"JTAGEN:", u"OCDEN:"},
    {}};
inline constexpr FuseCaptions kGroupD{
    {u"CKSEL0:", u"CKSEL1:", u"CKSEL2:", u"CKSEL3:", u"SUT0:", u"SUT1:", u"CKOUT:", u"CKDIV8:"},
    {u"BODLEVEL0:", u"BODLEVEL1:", u"BODLEVEL2:", u"EESAVE:", u"WDTON:", u"SPIEN:", u"DWEN:", u"RSTDISBL:"},
    {u"BOOTRST:", u"BOOTSZ0:", u"BOOTSZ1:"}};

struct FuseVariant {
  std::uint8_t variant;  ///< quorinwoption(0)
  const FuseCaptions* captions;
  // Bits whose rows are hidden.
  std::uint8_t low_hidden;
  std::uint8_t high_hidden;
  std::uint8_t extended_hidden;
  std::uint8_t high_disabled;  ///< bits of the high byte that can be seen only
  bool has_calibration;
  bool calibration_enabled;
};

inline constexpr std::array kFuseVariants{
    //               hidden: low   high  ext   disabled cal    enabled
    FuseVariant{ 4, &kGroupA, 0x00, 0x00, 0x10, 0x40, true,  false},
    FuseVariant{ 5, &kGroupB, 0x00, 0x00, 0x1C, 0x40, true,  false},
    FuseVariant{ 6, &kGroupB, 0x00, 0x00, 0x1F, 0x40, true,  false},
    FuseVariant{ 7, &kGroupA, 0x00, 0x00, 0x01, 0x40, true,  false},
    FuseVariant{ 8, &kGroupA, 0x00, 0x00, 0x18, 0x40, true,  false},
    FuseVariant{ 9, &kGroupA, 0x00, 0x00, 0x10, 0x40, true,  false},
    FuseVariant{10, &kGroupC, 0x00, 0xFC, 0x1F, 0x01, true,  false},
    FuseVariant{11, &kGroupB, 0x00, 0x00, 0x1F, 0x40, true,  false},
    FuseVariant{12, &kGroupB, 0x00, 0x00, 0x1F, 0x40, true,  false},
    FuseVariant{13, &kGroupB, 0x00, 0x00, 0x1F, 0x40, true,  false},
    FuseVariant{14, &kGroupB, 0x80, 0xFF, 0x1F, 0x40, false, true},
    FuseVariant{15, &kGroupD, 0x00, 0x00, 0x1E, 0xA0, true,  true},
    FuseVariant{16, &kGroupD, 0x00, 0x00, 0x18, 0xA0, true,  true},
};

/// A variant's own caption, which replaces its group's.
struct OwnCaption {
  enum class Of : std::uint8_t { kLow, kHigh, kExtended };
  std::uint8_t variant;
  Of byte;
  std::uint8_t bit;
  std::u16string_view caption;
};

inline constexpr std::array kOwnCaptions{
    OwnCaption{ 9, OwnCaption::Of::kExtended, 0, u"TA0SEL:"},
    OwnCaption{11, OwnCaption::Of::kHigh,     6, u"WDTON:"},
    OwnCaption{11, OwnCaption::Of::kHigh,     7, u"S8535C:"},
    OwnCaption{12, OwnCaption::Of::kHigh,     6, u"WDTON:"},
    OwnCaption{12, OwnCaption::Of::kHigh,     7, u"RSTDISBL:"},
    OwnCaption{13, OwnCaption::Of::kHigh,     6, u"WDTON:"},
    OwnCaption{13, OwnCaption::Of::kHigh,     7, u"S8515C:"},
    OwnCaption{14, OwnCaption::Of::kLow,      0, u"CKSEL0:"},
    OwnCaption{14, OwnCaption::Of::kLow,      1, u"CKSEL1:"},
    OwnCaption{14, OwnCaption::Of::kLow,      2, u"CKSEL2:"},
    OwnCaption{14, OwnCaption::Of::kLow,      3, u"BODEN:"},
    OwnCaption{14, OwnCaption::Of::kLow,      4, u"BODLEVEL:"},
    OwnCaption{14, OwnCaption::Of::kLow,      5, u"SPIEN:"},
    OwnCaption{14, OwnCaption::Of::kLow,      6, u"BOOTRST:"},
    OwnCaption{15, OwnCaption::Of::kExtended, 0, u"SELFPRGEN:"},
};

/// The address ranges of the eight flash blocks.
struct BlockCaptions {
  std::initializer_list<std::uint8_t> variants;
  std::array<std::u16string_view, 8> blocks;  ///< block 0 first
};

inline constexpr std::initializer_list<std::uint8_t> kBlockVariants[] = {
    {11, 21, 23, 25}, {12, 22, 24}, {13}, {14}, {15}};
inline constexpr std::array kBlockCaptions{
    BlockCaptions{kBlockVariants[0],
        {u"0x0000 - 0x0FFF", u"0x1000 - 0x1FFF", u"0x2000 - 0x2FFF", u"0x3000 - 0x3FFF",
         u"0x4000 - 0x4FFF", u"0x5000 - 0x5FFF", u"0x6000 - 0x6FFF", u"0x7000 - 0x7DFD"}},
    BlockCaptions{kBlockVariants[1],
        {u"0x0000 - 0x03FF", u"0x0400 - 0x07FF", u"0x0800 - 0x0BFF", u"0x0C00 - 0x0FFF",
         u"0x1000 - 0x13FF", u"0x1400 - 0x17FF", u"0x1800 - 0x1BFF", u"0x1C00 - 0x1DFD"}},
    BlockCaptions{kBlockVariants[2],
        {u"0x0000 - 0x1FFF", u"0x2000 - 0x3FFF", u"0x4000 - 0x5FFF", u"0x6000 - 0x7FFF",
         u"0x8000 - 0x9FFF", u"0xA000 - 0xBFFF", u"0xC000 - 0xDFFF", u"0xE000 - 0xFDFD"}},
    BlockCaptions{kBlockVariants[3],
        {u"0x0000 - 0x1FFF", u"0x2000 - 0x3FFF", u"0x4000 - 0x5FFF", u"0x6000 - 0x7FFD",
         u"No effect", u"No effect", u"No effect", u"No effect"}},
    BlockCaptions{kBlockVariants[4],
        {u"0x00000 - 0x03FFF", u"0x04000 - 0x07FFF", u"0x08000 - 0x0BFFF", u"0x0C000 - 0x0FFFF",
         u"0x10000 - 0x13FFF", u"0x14000 - 0x17FFF", u"0x18000 - 0x1BFFF", u"0x1C000 - 0x1FBFD"}},
};
// clang-format on

}  // namespace fliglaf
