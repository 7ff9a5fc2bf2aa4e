// What is sent to parts with the AVR JTAG programming interface. The numbers are those of the data
// sheets of such parts.
#pragma once

#include <array>
#include <cstdint>

#include "image_layout/image_layout.h"

namespace fliglaf::avr_jtag {

/// Instructions of the test access port.
enum class Instruction : std::uint8_t {
  kProgEnable = 0x04,
  kProgCommands = 0x05,
  kProgPageLoad = 0x06,
  kProgPageRead = 0x07,
  kAvrReset = 0x0C,
};
inline constexpr std::int16_t kInstructionBits = 4;

/// The data that PROG_ENABLE waits for.
inline constexpr std::int32_t kEnableSignature = 0xA370;
inline constexpr std::int16_t kEnableBits = 16;

/// Programming commands, shifted under PROG_COMMANDS. Where one carries a byte, that is OR-ed in.
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
// A byte of EEPROM or signature, the calibration byte: a strobe, and the command that answers.
inline constexpr std::int32_t kReadStrobe = 0x3200;
inline constexpr std::int32_t kReadByte = 0x3300;
inline constexpr std::int32_t kCalibrationStrobe = 0x3600;
inline constexpr std::int32_t kReadCalibration = 0x3700;
// The configuration: each answers with the byte that it names.
inline constexpr std::int32_t kStartConfigRead = 0x3A00;
inline constexpr std::int32_t kReadFuseExtended = 0x3E00;
inline constexpr std::int32_t kReadFuseHigh = 0x3200;
inline constexpr std::int32_t kReadFuseLow = 0x3600;
inline constexpr std::int32_t kReadLock = 0x3700;
}  // namespace command
inline constexpr std::int16_t kCommandBits = 15;

// Sequences of commands.
inline constexpr std::array kChipErase{0x2380, 0x3180, 0x3380, 0x3380};
inline constexpr std::array kLatchData{0x3700, 0x7700, 0x3700};
inline constexpr std::array kWritePageOrFuseHigh{0x3700, 0x3500, 0x3700, 0x3700};
inline constexpr std::array kWriteEepromFuseLowOrLock{0x3300, 0x3100, 0x3300, 0x3300};
inline constexpr std::array kWriteFuseExtended{0x3B00, 0x3900, 0x3B00, 0x3B00};

/// The bytes of the configuration in the order in which they are captured.
inline constexpr std::array kCaptureOrder{fuse_byte::kExtended, fuse_byte::kHigh, fuse_byte::kLow,
                                          fuse_byte::kLock, fuse_byte::kCalibration};

}  // namespace fliglaf::avr_jtag
