#include "families/serial_page.h"

#include <algorithm>
#include <array>
#include <span>

#include "families/serial_lines.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

constexpr std::uint8_t kChipErase = 0x80;
constexpr std::uint8_t kReadFlashLow = 0x20;
constexpr std::uint8_t kReadFlashHigh = 0x28;
constexpr std::uint8_t kLoadPageLow = 0x40;
constexpr std::uint8_t kLoadPageHigh = 0x48;
constexpr std::uint8_t kWritePage = 0x4C;
constexpr std::uint8_t kReadEeprom = 0xA0;
constexpr std::uint8_t kWriteEeprom = 0xC0;

/// Instructions of three bytes that answer with the fourth.
using ReadInstruction = std::array<std::uint8_t, 3>;
constexpr ReadInstruction kReadFuseLow{0x50, 0x00, 0x00};
constexpr ReadInstruction kReadFuseExtended{0x50, 0x08, 0x00};
constexpr ReadInstruction kReadFuseHigh{0x58, 0x08, 0x00};
constexpr ReadInstruction kReadLock{0x58, 0x00, 0x00};
/// Reads one of four calibration bytes.
constexpr ReadInstruction ReadCalibration(std::uint8_t which) { return {0x38, 0x00, which}; }

// Second bytes of the instructions that write a configuration byte.
constexpr std::uint8_t kWriteFuseLow = 0xA0;
constexpr std::uint8_t kWriteFuseExtended = 0xA4;
constexpr std::uint8_t kWriteFuseHigh = 0xA8;
constexpr std::uint8_t kWriteLock = 0xE0;

// Pauses, in units of the write time.
constexpr std::int32_t kPageOrConfigWrite = 1;
constexpr std::int32_t kErase = 2;

// Options that select a line mode. In family 13 they are those of parts with one and with two fuse
// bytes.
constexpr std::uint8_t kOptionWithAlternateLines = 14;
constexpr std::uint8_t kOptionWithStandardLines = 15;
constexpr std::uint8_t kOptionWithOneFuseByte = 14;

// Bits that are 1 whatever the byte says.
constexpr std::uint8_t kUnusedFuseBit = 0x80;   ///< of the fuse byte of parts with one
constexpr std::uint8_t kUnusedLockBits = 0xC0;  ///< written as 1 in family 13
constexpr std::uint8_t kLockBit2 = 0x02;        ///< of a lock byte that is read

/// A configuration byte on its way from the image to the device, or back: which one (fuse_byte),
/// its instruction, and the bits that are set.
struct ConfigWrite {
  int place;
  std::uint8_t instruction;
  std::uint8_t forced = 0;
};
struct ConfigRead {
  int place;
  ReadInstruction instruction;
  std::uint8_t forced = 0;
};

/// What both families do: dataOp14, program14 and erase14 are dataOp13, program13 and erase13 with
/// other pauses. The configuration bytes are each family's own.
class SerialPage : public Family {
 public:
  /// Sends the programming enable until the device echoes its second byte, at most Retries() times
  /// and once at least. A device that never does is left to the operation to find.
  void Enter() override {
    SelectMode();
    lines_.SetUp(ResetLevel::kHigh);
    io.DelayMs(200);
    lines_.ConfigureShifter(ShifterLength::kShort);
    lines_.QueueCapture();  // this byte is discarded
    io.FlushQueue();
    int attempts = 0;
    while (!EnableEchoed() && ++attempts < run.Retries()) {
    }
    lines_.Send({0x00});  // the fourth byte of the programming enable
  }
  void ReadPass(CheckMode mode) override { dataOp13(mode); }
  void Program() override { program13(); }
  void Code8() override { erase13(); }
  void Code9() override { WriteConfig(); }
  Signature ReadSignature() override { return lines_.ReadWordFamilySignature(); }

 protected:
  /// What the families have of their own.
  struct Variant {
    std::uint8_t code;
    std::int32_t flash_read_gap;  ///< µs after each byte of the flash, 0: none
    std::int32_t eeprom_write;    ///< after an EEPROM byte, in units of the write time
  };
  SerialPage(Run& request, const Variant& variant)
      : Family(request),
        lines_(request),
        variant_(variant),
        image_(LayoutOf(variant.code, SizesOf(vars))) {}

  virtual void WriteConfig() = 0;  ///< config13 and config14, "input"
  virtual void ReadConfig() = 0;   ///< config13 and config14, "output"

  /// The image's copy of a configuration byte.
  [[nodiscard]] std::uint8_t& ImageByte(int place) {
    return vars.quorinibuffer[image_.config_start + place];
  }

  void Write(std::span<const ConfigWrite> bytes) {
    for (const ConfigWrite& row : bytes) {
      const auto value = static_cast<std::uint8_t>(ImageByte(row.place) | row.forced);
      lines_.SendControl({row.instruction, 0x00, value});
      io.ShortDelay(run.WriteTime(kPageOrConfigWrite));
    }
  }

  void Read(std::span<const ConfigRead> bytes) {
    for (const ConfigRead& row : bytes) {
      const auto [code, high, low] = row.instruction;
      lines_.Send({code, high, low});
      const std::uint8_t answer = lines_.Receive();
      ImageByte(row.place) = answer | row.forced;
    }
  }

 private:
  /// Parts with another option leave the first two bytes of the packet as they are.
  void SelectMode() {
    switch (vars.quorinwoption[0]) {
      case kOptionWithAlternateLines:
        return run.SelectLineMode(LineMode::kAlternate);
      case kOptionWithStandardLines:
        return run.SelectLineMode(LineMode::kStandard);
      default:
        return run.SendPacket({}, kLongPacket);
    }
  }

  /// A reset pulse and the first bytes of the programming enable; the second comes back while the
  /// third is sent.
  [[nodiscard]] bool EnableEchoed() {
    lines_.SetReset(ResetLevel::kLow);
    lines_.SetReset(ResetLevel::kHigh);
    lines_.SetReset(ResetLevel::kLow);
    io.DelayMs(200);
    lines_.SendControl({SerialLines::kEnable});
    return lines_.Receive() == SerialLines::kEnable;
  }

  void dataOp13(CheckMode mode) {
    RequireReadable();
    OpenPass(PassKind::kBlocks);
    if (ReadFlash(mode) && ReadEeprom(mode) && mode == CheckMode::kRead) ReadConfig();
    ClosePass();
  }

  /// A stop leaves at once.
  void program13() {
    RequireReadable();
    if (!WriteFlash()) return;
    io.FlushQueue();
    io.DelayMs(100);
    if (!WriteEeprom()) return;
    io.FlushQueue();
    io.DelayMs(100);
    VerifyProgrammed();
  }

  void erase13() {
    RequireReadable();
    lines_.SendControl({kChipErase, 0x00, 0x00});
    io.ShortDelay(run.WriteTime(kErase));
    NoteBlankCheck(run);
    dataOp13(CheckMode::kBlankCheck);
  }

  /// Flash and EEPROM are read in one block each. Every operation but the configuration's ends by
  /// reading them, so none begins on a memory too large for that: throws std::length_error.
  void RequireReadable() const {
    RequireOneBlock(image_.main_bytes);
    RequireOneBlock(image_.data_bytes);
  }

  [[nodiscard]] std::int64_t FlashWords() const { return image_.main_bytes / 2; }

  void QueueAddressed(std::uint8_t instruction, std::int64_t address) {
    lines_.QueueSend(instruction, static_cast<std::uint8_t>(address >> 8),
                     static_cast<std::uint8_t>(address));
  }

  /// False when the pass is over, as ReadEeprom.
  [[nodiscard]] bool ReadFlash(CheckMode mode) {
    ArmCapture();
    for (std::int64_t word = 0; word < FlashWords(); ++word) {
      for (const std::uint8_t instruction : {kReadFlashLow, kReadFlashHigh}) {
        QueueAddressed(instruction, word);
        lines_.QueueCapture();
        if (variant_.flash_read_gap > 0) io.QueueDelay(variant_.flash_read_gap);
      }
      if (!GoesOn(word)) return false;
    }
    return FetchAndJudge({.bytes = image_.main_bytes, .image = 0}, mode);
  }

  [[nodiscard]] bool ReadEeprom(CheckMode mode) {
    ArmCapture();
    for (std::int64_t address = 0; address < image_.data_bytes; ++address) {
      QueueAddressed(kReadEeprom, address);
      lines_.QueueCapture();
      if (!GoesOn(address)) return false;
    }
    return FetchAndJudge({.bytes = image_.data_bytes, .image = image_.data_start}, mode);
  }

  /// False after a stop, as WriteEeprom.
  [[nodiscard]] bool WriteFlash() {
    const std::int64_t page_words = std::max<std::int64_t>(vars.quorinpagelength[0], 1);
    for (std::int64_t page = 0; page < FlashWords(); page += page_words) {
      for (std::int64_t k = 0; k < page_words; ++k) {
        const std::int64_t word = page | k;
        for (const int half : {0, 1}) {
          lines_.QueueSend(half == 0 ? kLoadPageLow : kLoadPageHigh, 0x00,
                           static_cast<std::uint8_t>(k));
          lines_.QueueSend(vars.quorinibuffer[2 * word + half]);
        }
        if (!GoesOn(word)) return false;
      }
      QueueAddressed(kWritePage, page);
      lines_.QueueSend(0x00);
      io.QueueDelay(run.WriteTime(kPageOrConfigWrite));
    }
    return true;
  }

  [[nodiscard]] bool WriteEeprom() {
    for (std::int64_t address = 0; address < image_.data_bytes; ++address) {
      QueueAddressed(kWriteEeprom, address);
      lines_.QueueSend(vars.quorinibuffer[image_.data_start + address]);
      io.QueueDelay(run.WriteTime(variant_.eeprom_write));
      if (!GoesOn(address)) return false;
    }
    return true;
  }

  SerialLines lines_;
  const Variant variant_;
  const ImageLayout image_;
};

constexpr ConfigWrite kOneFuseWrites[] = {
    {fuse_byte::kLow, kWriteFuseLow, kUnusedFuseBit},
    {fuse_byte::kLock, kWriteLock, kUnusedLockBits},
};
constexpr ConfigRead kOneFuseReads[] = {
    {fuse_byte::kLow, kReadFuseLow},
    {fuse_byte::kLock, kReadLock, kLockBit2},
};

constexpr ConfigWrite kTwoFuseWrites[] = {
    {fuse_byte::kLow, kWriteFuseLow},
    {fuse_byte::kHigh, kWriteFuseHigh},
    {fuse_byte::kLock, kWriteLock, kUnusedLockBits},
};

/// The calibration byte that belongs to the clock source in the low fuse byte: sources 1 to 4 are
/// the four frequencies of the internal oscillator.
constexpr ConfigRead CalibrationOf(std::uint8_t fuse_low) {
  const int source = fuse_low & 0x07;
  const auto which = static_cast<std::uint8_t>(source == 0 ? 0 : (source - 1) & 0x03);
  return {fuse_byte::kCalibration, ReadCalibration(which)};
}

class SerialPage13 final : public SerialPage {
 public:
  explicit SerialPage13(Run& request)
      : SerialPage(request, {.code = 13, .flash_read_gap = 10, .eeprom_write = 2}) {}

 private:
  [[nodiscard]] bool HasOneFuse() const { return vars.quorinwoption[0] == kOptionWithOneFuseByte; }

  void WriteConfig() override {
    if (HasOneFuse()) return Write(kOneFuseWrites);
    Write(kTwoFuseWrites);
  }

  void ReadConfig() override {
    if (HasOneFuse()) return Read(kOneFuseReads);
    Read(std::array{ConfigRead{fuse_byte::kLow, kReadFuseLow}});
    Read(std::array{
        CalibrationOf(ImageByte(fuse_byte::kLow)),
        ConfigRead{fuse_byte::kHigh, kReadFuseHigh},
        ConfigRead{fuse_byte::kLock, kReadLock, kLockBit2},
    });
    ImageByte(fuse_byte::kExtended) = 0xFF;  // these parts have none
  }
};

constexpr ConfigWrite kThreeFuseWrites[] = {
    {fuse_byte::kLow, kWriteFuseLow},
    {fuse_byte::kHigh, kWriteFuseHigh},
    {fuse_byte::kLock, kWriteLock},
    {fuse_byte::kExtended, kWriteFuseExtended},
};
constexpr ConfigRead kThreeFuseReads[] = {
    {fuse_byte::kLow, kReadFuseLow},           {fuse_byte::kCalibration, ReadCalibration(0)},
    {fuse_byte::kHigh, kReadFuseHigh},         {fuse_byte::kLock, kReadLock, kLockBit2},
    {fuse_byte::kExtended, kReadFuseExtended},
};

class SerialPage14 final : public SerialPage {
 public:
  explicit SerialPage14(Run& request)
      : SerialPage(request, {.code = 14, .flash_read_gap = 0, .eeprom_write = 1}) {}

 private:
  void WriteConfig() override { Write(kThreeFuseWrites); }
  void ReadConfig() override { Read(kThreeFuseReads); }
};

}  // namespace

std::unique_ptr<Family> MakeSerialPage13(Run& run, WindowLines& /*lines*/) {
  return std::make_unique<SerialPage13>(run);
}

std::unique_ptr<Family> MakeSerialPage14(Run& run, WindowLines& /*lines*/) {
  return std::make_unique<SerialPage14>(run);
}

}  // namespace fliglaf
