// What the passes of families 4 to 7 share: instructions, programming commands, the image's layout.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>

#include "usb/request/run.h"

namespace fliglaf::avr_jtag {

/// Instructions of the test access port, four bits.
enum class Instruction : std::uint8_t {
  kProgEnable = 0x04,
  kProgCommands = 0x05,
  kProgPageLoad = 0x06,
  kProgPageRead = 0x07,
  kAvrReset = 0x0C,
};

/// The kind of pass that the programmer is told of.
inline constexpr std::uint8_t kPassKind = 0x0A;

/// Programming commands of 15 bits. Where one carries a byte, that is OR-ed in.
namespace command {
inline constexpr std::int32_t kEnterFlashWrite = 0x2310;
inline constexpr std::int32_t kEnterEepromWrite = 0x2311;
inline constexpr std::int32_t kEnterFlashRead = 0x2302;
inline constexpr std::int32_t kEnterEepromRead = 0x2303;
inline constexpr std::int32_t kEnterFuseWrite = 0x2340;
inline constexpr std::int32_t kEnterLockWrite = 0x2320;
inline constexpr std::int32_t kEnterConfigRead = 0x2304;
inline constexpr std::int32_t kEnterSignatureRead = 0x2308;
inline constexpr std::int32_t kAddressHigh = 0x0700;
inline constexpr std::int32_t kAddressLow = 0x0300;
inline constexpr std::int32_t kLoadData = 0x1300;
inline constexpr std::int32_t kLoadLock = 0x13C0;
}  // namespace command

/// Sequences that write what has been loaded.
inline constexpr std::initializer_list<std::int32_t> kWritePageOrFuseHigh{0x3700, 0x3500, 0x3700,
                                                                          0x3700};
inline constexpr std::initializer_list<std::int32_t> kWriteEepromOrFuseLow{0x3300, 0x3100, 0x3300,
                                                                           0x3300};
inline constexpr std::initializer_list<std::int32_t> kWriteFuseExtended{0x3B00, 0x3900, 0x3B00,
                                                                        0x3B00};

/// How a variant carries the bytes of a flash page.
enum class Variant : std::uint8_t {
  kByteRegister,  ///< one byte a time, an Update-DR after each
  kLongRegister,  ///< the whole page in one Shift-DR
};

void Select(Run& run, Instruction instruction);
/// Shifts commands under kProgCommands.
void Scan(Run& run, std::initializer_list<std::int32_t> commands);
/// The high byte of an address, and the low one.
void ScanAddressHigh(Run& run, std::int64_t address);
void ScanAddressLow(Run& run, std::int64_t address);
/// From Run-Test/Idle to Shift-DR.
void WalkToShiftDr(Run& run);

/// Words and bytes of the memories by the host's sizes. A page has one word at least.
[[nodiscard]] std::int64_t FlashWords(const Run& run);
[[nodiscard]] std::int64_t EepromBytes(const Run& run);
[[nodiscard]] std::int64_t PageWords(const Run& run);

/// Throws std::length_error for an EEPROM that one block cannot bring back, RangeError for a flash
/// that the data buffer cannot hold.
void RequireImage(const Run& run);

/// Places of the configuration bytes, counted from the first of them.
namespace config_byte {
inline constexpr int kFuseLow = 0;
inline constexpr int kCalibration = 1;
inline constexpr int kFuseHigh = 2;
inline constexpr int kLock = 3;
inline constexpr int kFuseExtended = 4;
}  // namespace config_byte
/// Index in the image of the first configuration byte.
[[nodiscard]] std::int64_t ConfigStart(const Run& run);

/// Which fuse bytes the device's variant has; none for one that is not known.
struct FuseBytes {
  bool extended;
};
[[nodiscard]] std::optional<FuseBytes> FusesOf(const Run& run);

}  // namespace fliglaf::avr_jtag
