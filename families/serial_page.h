// What families 13 and 14 share: microcontrollers with flash written in pages of words, EEPROM, and
// fuse and lock bytes, programmed over four lines with one set of four-byte instructions. They
// differ in pauses and in their configuration bytes. The numbers are those of the data sheets of
// such parts.
#pragma once

#include <cstdint>
#include <span>

#include "families/family.h"
#include "families/serial_lines.h"

namespace fliglaf {

namespace serial_page {

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
/// Reads one of four calibration bytes.
[[nodiscard]] constexpr ReadInstruction ReadCalibration(std::uint8_t which) {
  return {0x38, 0x00, which};
}

/// Second bytes of the instructions that write a configuration byte.
inline constexpr std::uint8_t kWriteFuseLow = 0xA0;
inline constexpr std::uint8_t kWriteFuseExtended = 0xA4;
inline constexpr std::uint8_t kWriteFuseHigh = 0xA8;
inline constexpr std::uint8_t kWriteLock = 0xE0;

/// The configuration bytes, in the order in which the image holds them.
enum class ConfigByte : std::uint8_t { kFuseLow, kCalibration, kFuseHigh, kLock, kFuseExtended };

/// A configuration byte on its way from the image to the device, or back. `forced` bits are set
/// whatever the byte says.
struct ConfigWrite {
  ConfigByte byte;
  std::uint8_t instruction;
  std::uint8_t forced = 0;
};
struct ConfigRead {
  ConfigByte byte;
  ReadInstruction instruction;
  std::uint8_t forced = 0;
};

}  // namespace serial_page

class SerialPage : public Family {
 public:
  /// Sends the programming enable until the device echoes its second byte, at most Retries() times
  /// and once at least. A device that never does is left to the operation to find.
  void Enter() override;
  Signature ReadSignature() override { return lines_.ReadWordFamilySignature(); }

 protected:
  /// What the families have of their own.
  struct Variant {
    std::uint8_t code;
    std::int32_t flash_read_gap;  ///< µs after each byte of the flash, 0: none
    std::int32_t eeprom_write;    ///< after an EEPROM byte, in units of the write time
  };
  SerialPage(Run& request, const Variant& variant);

  /// Writes the configuration bytes, or reads them.
  virtual void Config(ConfigDirection direction) = 0;

  // Flash and EEPROM are read in one block each. For a memory that is larger these three throw
  // std::length_error before they do anything.

  /// Read, verify, blank check or compare of flash and EEPROM; a read takes the configuration too.
  void DataOp(CheckMode mode);
  /// Writes flash and EEPROM, then verifies. A stop leaves at once.
  void WriteAndVerify();
  /// Chip erase, then a blank check.
  void Erase();

  /// The image's copy of a configuration byte.
  [[nodiscard]] std::uint8_t& ImageByte(serial_page::ConfigByte byte);
  void WriteConfig(std::span<const serial_page::ConfigWrite> bytes);
  void ReadConfig(std::span<const serial_page::ConfigRead> bytes);

 private:
  void SelectMode();
  [[nodiscard]] bool EnableEchoed();
  void RequireReadable() const;
  [[nodiscard]] std::int64_t FlashWords() const { return image_.main_bytes / 2; }
  void QueueAddressed(std::uint8_t instruction, std::int64_t address);
  // False when the pass is over.
  [[nodiscard]] bool ReadFlash(CheckMode mode);
  [[nodiscard]] bool ReadEeprom(CheckMode mode);
  // False after a stop.
  [[nodiscard]] bool WriteFlash();
  [[nodiscard]] bool WriteEeprom();

  SerialLines lines_;
  const Variant variant_;
  const ImageLayout image_;
};

}  // namespace fliglaf
