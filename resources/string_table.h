// The library's own string table: texts of the user interface by number. A number is the base of a
// language block plus the number of a text in it.
#pragma once

#include <cstdint>
#include <string_view>

namespace fliglaf::resources {

/// Bases of the language blocks, in the order of the blocks and one block size apart.
inline constexpr std::int64_t kEnglish = 0;
inline constexpr std::int64_t kChineseSimplified = 3000;
inline constexpr std::int64_t kChineseTraditional = 6000;
inline constexpr std::int64_t kKorean = 9000;
inline constexpr std::int64_t kPolish = 12000;
inline constexpr std::int64_t kEnglishSecondCopy = 15000;
inline constexpr std::int64_t kItalian = 18000;
inline constexpr std::int64_t kDutch = 21000;
inline constexpr std::int64_t kBlockSize = 3000;
/// Blocks of the library's own follow the numbered ones, in the same order: a text of these has a
/// number above this one, to which the same bases are added.
inline constexpr int kOwnTexts = 24000;

/// Texts of the user interface, by their number within a language block.
namespace text {
inline constexpr int kWarning = 1066;
inline constexpr int kOk = 1067;
inline constexpr int kCancel = 1068;
inline constexpr int kNote = 1095;
inline constexpr int kDeviceAddress = 1149;
inline constexpr int kDeviceData = 1150;
inline constexpr int kBufferAddress = 1151;
inline constexpr int kBufferData = 1152;
inline constexpr int kStop = 1210;
inline constexpr int kInformation = 1240;
inline constexpr int kBlockProtect = 1270;
inline constexpr int kDisable = 1273;
inline constexpr int kEnable = 1274;
inline constexpr int kOscillatorType = 1275;
inline constexpr int kWatchdog = 1276;
inline constexpr int kDeviceCodeError = 1278;
inline constexpr int kDeviceAndBuffer = 1281;
inline constexpr int kProgramMemory = 1282;
inline constexpr int kIdLocations = 1283;
inline constexpr int kDataMemory = 1284;
inline constexpr int kConfigWord = 1285;
inline constexpr int kEditConfiguration = 1293;
inline constexpr int kOscillator = 1297;
inline constexpr int kVerify = 2002;
inline constexpr int kBlankCheck = 2003;
inline constexpr int kProgConfig = 2024;
inline constexpr int kBufferTooShort = kOwnTexts + 1;
}  // namespace text

/// The text with that number, UTF-16; empty when the table has none, whatever the number.
[[nodiscard]] std::u16string_view FindText(std::int64_t number);

}  // namespace fliglaf::resources
