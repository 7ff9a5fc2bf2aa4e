// What families 13 and 14 share: one instruction set, and an image of flash, EEPROM and
// configuration bytes. What they differ in is their data.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "usb/request/run.h"

namespace fliglaf::serial_page {

/// Instructions of three bytes that answer with the fourth.
struct ReadInstruction {
  std::uint8_t code;
  std::uint8_t high;
  std::uint8_t low;
};
inline constexpr ReadInstruction kReadFuseLow{0x50, 0x00, 0x00};
inline constexpr ReadInstruction kReadFuseExtended{0x50, 0x08, 0x00};
inline constexpr ReadInstruction kReadFuseHigh{0x58, 0x08, 0x00};
inline constexpr ReadInstruction kReadLock{0x58, 0x00, 0x00};
inline constexpr std::uint8_t kReadCalibration = 0x38;  ///< the low byte tells which of the four

/// Second bytes of the instructions that write a configuration byte.
inline constexpr std::uint8_t kWriteFuseLow = 0xA0;
inline constexpr std::uint8_t kWriteFuseExtended = 0xA4;
inline constexpr std::uint8_t kWriteFuseHigh = 0xA8;
inline constexpr std::uint8_t kWriteLock = 0xE0;

/// Where a configuration byte stands in the image, as its distance below the end.
namespace below_end {
inline constexpr int kFuseLow = 32;
inline constexpr int kCalibration = 31;
inline constexpr int kFuseHigh = 30;
inline constexpr int kLock = 29;
inline constexpr int kFuseExtended = 28;
}  // namespace below_end

/// A configuration byte on its way from the image to the device, or back. `forced` bits are set
/// whatever the byte says.
struct ConfigWrite {
  int below_end;
  std::uint8_t instruction;
  std::uint8_t forced = 0;
};
struct ConfigRead {
  int below_end;
  ReadInstruction instruction;
  std::uint8_t forced = 0;
};

/// The image's configuration byte at that distance below the end.
[[nodiscard]] std::uint8_t& ConfigByte(Run& run, int below_end);
/// Each write is followed by the write time.
void WriteConfig(Run& run, std::span<const ConfigWrite> bytes);
void ReadConfig(Run& run, std::span<const ConfigRead> bytes);

/// What a family has of its own.
struct Family {
  std::int32_t flash_read_gap;     ///< µs after each byte of the flash, 0: none
  std::int32_t eeprom_write_time;  ///< after an EEPROM byte, in units of the write time
  void (*config)(Run&, std::string_view direction);
};

void DataOp(Run& run, std::int16_t mode, const Family& family);
/// Writes flash and EEPROM, then verifies with `data_op`.
void Program(Run& run, const Family& family, void (*data_op)(Run&, std::int16_t mode));
/// Chip erase, then a blank check with `data_op`.
void Erase(Run& run, void (*data_op)(Run&, std::int16_t mode));

}  // namespace fliglaf::serial_page
