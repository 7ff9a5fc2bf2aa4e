#include "families/isp_fam3.h"

#include <algorithm>

#include "families/serial_lines.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

constexpr std::uint8_t kReadLow = 0x20;
constexpr std::uint8_t kReadHigh = 0x28;
constexpr std::uint8_t kWriteLow = 0x40;
constexpr std::uint8_t kWriteHigh = 0x48;
constexpr std::uint8_t kReadEeprom = 0xA0;
constexpr std::uint8_t kWriteEeprom = 0xC0;
constexpr std::uint8_t kChipErase = 0x9F;
constexpr std::uint8_t kWriteLock = 0xF9;  ///< the lock bits are bits 1 and 2

constexpr std::int32_t kReadGap = 100;  ///< µs after a byte of a word
constexpr std::uint8_t kErased = 0xFF;

// Pauses, in units of the write time.
constexpr std::int32_t kByteWrite = 1;
constexpr std::int32_t kErase = 10;
constexpr std::int32_t kResetPulse = 2;

/// Where programming takes the EEPROM from: behind the largest program memory. A read puts it
/// right behind the program memory, which is the same place for 512 words.
constexpr std::int64_t kEepromImage = 0x400;

class IspFam3 : public Family {
 public:
  explicit IspFam3(Run& request)
      : Family(request), lines_(request), image_(LayoutOf(3, SizesOf(request.vars))) {}

  /// Reset stays low; nothing answers the programming enable.
  void Enter() override {
    run.SelectLineMode(LineMode::kStandard);
    lines_.SetUp(ResetLevel::kHigh);
    io.DelayMs(100);
    lines_.SetReset(ResetLevel::kLow);
    io.DelayMs(200);
    lines_.ConfigureShifter(ShifterLength::kShort);
    EnableProgramming();
  }
  void ReadPass(CheckMode mode) override { ispFam3ReadPass(mode); }
  void Program() override { ispFam3Program(); }
  void Code8() override { ispWriteLockBits(2); }
  void Code9() override { ispWriteLockBits(0); }
  void Code10() override { ispFam3Op10(); }
  Signature ReadSignature() override { return lines_.ReadWordFamilySignature(); }

 private:
  /// Both memories, whatever the range.
  void ispFam3ReadPass(CheckMode mode) {
    RequireOneBlock(image_.main_bytes);
    OpenPass(PassKind::kBlocks);
    if (ReadWords(mode)) ReadEeprom(mode);
    ClosePass();
  }

  /// All words, and the EEPROM from RangeStart on. An erased device already holds 0xFF, so those
  /// bytes are not sent.
  void ispFam3Program() {
    RequireOneBlock(image_.main_bytes);
    OpenPass(PassKind::kBytes);
    WriteWords();
    WriteEeprom();
    io.FlushQueue();
    VerifyAfterPowerUp();
  }

  /// Writes the lock bits: `bits` 1 and 2 are lock bits 1 and 2, and 0 locks.
  void ispWriteLockBits(std::int32_t bits) {
    lines_.SendControl({static_cast<std::uint8_t>(bits * 2 | kWriteLock), 0x00, 0x00});
  }

  void ispFam3Op10() {
    lines_.SendControl({kChipErase, 0x00, 0x00});
    io.ShortDelay(run.WriteTime(kErase));
    lines_.SetReset(ResetLevel::kHigh);
    lines_.SetReset(ResetLevel::kLow);
    io.ShortDelay(run.WriteTime(kResetPulse));
    NoteBlankCheck(run);
    EnableProgramming();
    ispFam3ReadPass(CheckMode::kBlankCheck);
  }

  void EnableProgramming() { lines_.SendControl({SerialLines::kEnable, 0x00, 0x00}); }

  /// Words of the program memory; none when the host got the sizes wrong.
  [[nodiscard]] std::int64_t Words() const {
    return std::max<std::int64_t>(image_.main_bytes / 2, 0);
  }

  void QueueWordInstruction(std::uint8_t instruction, std::int64_t word) {
    lines_.QueueSend(instruction, static_cast<std::uint8_t>(word >> 8 & 1),
                     static_cast<std::uint8_t>(word & 0xFF));
  }

  void QueueEepromInstruction(std::uint8_t instruction, std::int64_t address) {
    lines_.QueueSend(instruction, 0x00, static_cast<std::uint8_t>(address & 0x3F));
  }

  /// False when the pass is over.
  bool ReadWords(CheckMode mode) {
    if (Words() == 0) return true;
    ArmCapture();
    for (std::int64_t word = 0; word < Words(); ++word) {
      for (const std::uint8_t instruction : {kReadLow, kReadHigh}) {
        QueueWordInstruction(instruction, word);
        lines_.QueueCapture();
        io.QueueDelay(kReadGap);
      }
    }
    const std::int64_t bytes = 2 * Words();
    return FetchAndJudge({.bytes = bytes, .image = 0, .count = WholePackets(bytes)}, mode);
  }

  /// The last block of a pass, so it does not matter whether it ended the pass.
  void ReadEeprom(CheckMode mode) {
    const std::int64_t bytes = image_.data_bytes;
    if (bytes <= 0) return;
    ArmCapture();
    for (std::int64_t address = 0; address < bytes; ++address) {
      QueueEepromInstruction(kReadEeprom, address);
      lines_.QueueCapture();
    }
    const std::int64_t image = std::max<std::int64_t>(image_.data_start, 0);
    static_cast<void>(
        FetchAndJudge({.bytes = bytes, .image = image, .count = WholePackets(bytes)}, mode));
  }

  void WriteWords() {
    for (std::int64_t word = 0; word < Words(); ++word) {
      for (const std::uint8_t instruction : {kWriteLow, kWriteHigh}) {
        const std::uint8_t byte = vars.quorinibuffer[2 * word + (instruction == kWriteHigh)];
        if (byte == kErased) continue;
        QueueWordInstruction(instruction, word);
        lines_.QueueSend(byte);
        io.QueueDelay(run.WriteTime(kByteWrite));
      }
      ProgressAt(word);
    }
  }

  void WriteEeprom() {
    for (std::int64_t address = run.RangeStart; address < image_.data_bytes; ++address) {
      const std::uint8_t byte = vars.quorinibuffer[kEepromImage + address];
      if (byte == kErased) continue;
      QueueEepromInstruction(kWriteEeprom, address);
      lines_.QueueSend(byte);
      io.QueueDelay(run.WriteTime(kByteWrite));
    }
  }

  SerialLines lines_;
  const ImageLayout image_;
};

}  // namespace

std::unique_ptr<Family> MakeIspFam3(Run& run, WindowLines& /*lines*/) {
  return std::make_unique<IspFam3>(run);
}

}  // namespace fliglaf
