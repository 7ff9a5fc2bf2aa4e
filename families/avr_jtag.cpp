#include "families/avr_jtag.h"

#include <algorithm>
#include <span>

#include "families/avr_jtag_commands.h"
#include "families/software_tap.h"
#include "image_layout/rounding.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using namespace avr_jtag;

/// JTAGEN in the high fuse byte: 0 keeps the interface open. A device without it could not be
/// reached again, so it is programmed whatever the image says.
constexpr std::int32_t kWithoutJtagEnable = 0xBF;

/// Milliseconds until the programmer has the configuration, which takes longer than a block.
constexpr std::int32_t kConfigWait = 1000;
/// Words in a page of the flash for each byte in a page of the EEPROM.
constexpr std::int64_t kFlashWordsPerEepromByte = 16;
/// µs between the bytes of a long register.
constexpr std::int32_t kBytePause = 2;
/// µs before the EEPROM is read.
constexpr std::int32_t kEepromPause = 100;

// Pauses, in units of the write time.
constexpr std::int32_t kPageOrConfigWrite = 1;
constexpr std::int32_t kErase = 2;

/// Of the devices with three fuse bytes.
constexpr std::uint8_t kOptionsWithExtendedFuses[] = {4, 5, 7, 8};
constexpr std::uint8_t kOptionWithTwoFuseBytes = 6;

using Commands = std::span<const std::int32_t>;

constexpr std::int32_t LowByte(std::int64_t value) {
  return static_cast<std::int32_t>(value & 0xFF);
}

/// What the two variants share. They differ in how a page of the flash passes through the data
/// register.
class AvrJtag : public Family {
 public:
  AvrJtag(Run& request, WindowLines& lines, std::uint8_t code)
      : Family(request),
        tap_(request, lines.jtag),
        lines_(lines.jtag),
        image_(LayoutOf(code, SizesOf(vars))),
        page_words_(std::max<std::int64_t>(vars.quorinpagelength[0], 1)),
        eeprom_page_bytes_(std::max<std::int64_t>(
            DivideToEven(vars.quorinpagelength[0], kFlashWordsPerEepromByte), 1)) {}

  void Enter() override {
    lines_ = kJtagPort0;
    run.SelectLineMode(LineMode::kStandard);
    tap_.OpenInput();
    io.WriteLatch(lines_.fixed(), lines_.lineRegister);
    io.DelayMs(100);
    tap_.ConfigureShifter();
    enterJtagProg();
  }
  /// jtagAReadPass, jtagBReadPass.
  void ReadPass(CheckMode mode) override {
    RequireImage();
    OpenPass(PassKind::kBlocks);
    if (jtagReadFlash(mode) && jtagReadEeprom(mode) && mode == CheckMode::kRead) jtagReadConfig();
    ClosePass();
  }
  /// jtagAProgram, jtagBProgram.
  void Program() override {
    RequireImage();  // refuse before writing what could not be verified
    jtagWriteFlash();
    jtagWriteEeprom();
    VerifyProgrammed();
  }
  /// jtagAErase, jtagBErase.
  void Code8() override {
    jtagChipErase();
    ReadPass(CheckMode::kBlankCheck);
  }
  void Code9() override { jtagWriteConfig(); }

  Signature ReadSignature() override {
    OpenPass(PassKind::kBlocks);
    Select(Instruction::kProgCommands);
    Send(command::kEnterSignatureRead);
    Signature bytes{};
    std::int32_t address = 0;
    for (std::uint8_t& byte : bytes) byte = jtagReadByte(address++);
    io.FlushQueue();
    SendClosingPacket();
    return bytes;
  }

 protected:
  /// Captures the page that Shift-DR gives, and stays there.
  virtual void CapturePage() = 0;
  /// Shifts the page from image byte `start` on, from Shift-DR to Run-Test/Idle.
  virtual void LoadPage(std::int64_t start) = 0;

  [[nodiscard]] std::int64_t page_bytes() const { return 2 * page_words_; }

  SoftwareTap tap_;

 private:
  /// Throws std::length_error for an EEPROM that one block cannot bring back, RangeError for a flash
  /// larger than the data buffer and than any device.
  void RequireImage() const {
    RequireOneBlock(image_.data_bytes);
    RequireData(run, 0, image_.main_bytes - 1);
  }

  static constexpr std::int64_t kBlockWords = kBlockBytes / 2;

  /// jtagAReadFlash, jtagBReadFlash: the flash in blocks of pages. A block is judged to its end,
  /// also where the flash ends within it.
  [[nodiscard]] bool jtagReadFlash(CheckMode mode) {
    tap_.Idle();
    Select(Instruction::kProgCommands);
    Send(command::kEnterFlashRead);
    for (std::int64_t block = 0; 2 * block < image_.main_bytes; block += kBlockWords) {
      ArmCapture();
      for (std::int64_t word = 0; word < kBlockWords; word += page_words_) {
        ReadPage(block | word);
        ProgressAt(block | word);
      }
      const Block captured{.bytes = kBlockBytes, .image = 2 * block, .order = BitOrder::kLowFirst};
      if (!FetchAndJudge(captured, mode)) return false;
    }
    return true;
  }

  void ReadPage(std::int64_t page) {
    SendAddress(page);
    Select(Instruction::kProgPageRead);
    tap_.FromIdleToShiftDr();
    CapturePage();
    tap_.FromShiftDrToIdle();
    Select(Instruction::kProgCommands);
  }

  /// jtagAWriteFlash, jtagBWriteFlash: the flash page by page. Nothing is polled: the pause must
  /// cover the write.
  void jtagWriteFlash() {
    Select(Instruction::kProgCommands);
    Send(command::kEnterFlashWrite);
    for (std::int64_t page = 0; 2 * page < image_.main_bytes; page += page_words_) {
      SendAddress(page);
      Select(Instruction::kProgPageLoad);
      tap_.FromIdleToShiftDr();
      LoadPage(2 * page);
      Select(Instruction::kProgCommands);
      Send(kWritePageOrFuseHigh);
      io.QueueDelay(run.WriteTime(kPageOrConfigWrite));
      ProgressAt(page);
    }
    io.FlushQueue();
  }

  void jtagWriteEeprom() {
    Select(Instruction::kProgCommands);
    Send(command::kEnterEepromWrite);
    for (std::int64_t page = 0; page < image_.data_bytes; page += eeprom_page_bytes_) {
      SendAddressHigh(page);
      for (std::int64_t k = 0; k < eeprom_page_bytes_; ++k) {
        SendAddressLow(page | k);
        Send(command::kLoadData | vars.quorinibuffer[image_.data_start + page + k]);
        Send(kLatchData);
      }
      Send(kWriteEepromFuseLowOrLock);
      io.QueueDelay(run.WriteTime(kPageOrConfigWrite));
      ProgressAt(page);
    }
    io.FlushQueue();
  }

  /// With the note of the blank check that follows.
  void jtagChipErase() {
    RequireImage();
    Select(Instruction::kProgCommands);
    Send(kChipErase);
    io.QueueDelay(run.WriteTime(kErase));
    io.FlushQueue();
    NoteBlankCheck(run);
  }

  /// From any state of the test access port to programming mode.
  void enterJtagProg() {
    tap_.Walk(7, 1);
    Select(Instruction::kAvrReset);
    tap_.scanDr(1, 1);
    Select(Instruction::kProgEnable);
    tap_.scanDr(kEnableSignature, kEnableBits);
  }

  /// Reads a byte at once; how it is read has been selected.
  std::uint8_t jtagReadByte(std::int32_t address) {
    Send(command::kAddressLow | address);
    Send(command::kReadStrobe);
    return tap_.ReadAnswerNow(command::kReadByte);
  }

  [[nodiscard]] bool jtagReadEeprom(CheckMode mode) {
    ArmCapture();
    io.QueueDelay(kEepromPause);
    tap_.Idle();
    Select(Instruction::kProgCommands);
    Send(command::kEnterEepromRead);
    for (std::int64_t address = 0; address < image_.data_bytes; ++address) {
      SendAddress(address);
      Send(command::kReadByte | LowByte(address));
      Send(command::kReadStrobe);
      tap_.CaptureAnswer(command::kReadByte);
      ProgressAt(address);
    }
    return FetchAndJudge(
        {.bytes = image_.data_bytes, .image = image_.data_start, .order = BitOrder::kLowFirst},
        mode);
  }

  /// Which fuse bytes the device has, by its option; those of an unknown option are not read.
  enum class Fuses : std::uint8_t { kUnknown, kWithoutExtended, kWithExtended };
  [[nodiscard]] Fuses FusesOfDevice() const {
    const std::uint8_t option = vars.quorinwoption[0];
    if (option == kOptionWithTwoFuseBytes) return Fuses::kWithoutExtended;
    const bool extended = std::ranges::count(kOptionsWithExtendedFuses, option) > 0;
    return extended ? Fuses::kWithExtended : Fuses::kUnknown;
  }

  void jtagReadConfig() {
    const Fuses fuses = FusesOfDevice();
    ArmCapture();
    Select(Instruction::kProgCommands);
    Send(command::kEnterConfigRead);
    if (fuses != Fuses::kUnknown) CaptureFuses(fuses);
    Select(Instruction::kProgCommands);
    Send(command::kEnterSignatureRead);
    Send(command::kAddressLow);
    Send(command::kCalibrationStrobe);
    tap_.CaptureAnswer(command::kReadCalibration);
    if (!FetchOrCountAsLost(kBlockAndEndMark, kConfigWait)) return;
    if (fuses == Fuses::kUnknown) return;
    HandConfigOver(std::span(kCaptureOrder).subspan(fuses == Fuses::kWithExtended ? 0 : 1));
  }

  void CaptureFuses(Fuses fuses) {
    if (fuses == Fuses::kWithExtended) {
      Send(command::kStartConfigRead);
      tap_.CaptureAnswer(command::kReadFuseExtended);
    } else {
      Send(command::kReadFuseExtended);  // not captured: the device has none
    }
    tap_.CaptureAnswer(command::kReadFuseHigh);
    tap_.CaptureAnswer(command::kReadFuseLow);
    tap_.CaptureAnswer(command::kReadLock);
  }

  void HandConfigOver(std::span<const int> places) {
    constexpr auto kStore = static_cast<std::int32_t>(CheckMode::kRead);
    std::int64_t captured = 0;
    for (const int place : places) {
      const std::int32_t byte = reverseBits(vars.quorinibuf2[captured++], 8);
      const auto image = static_cast<std::int32_t>(image_.config_start + place);
      if (io.BlockTransfer(byte, image, kStore) == 1) return;
    }
  }

  /// The lock bits come last: once they are programmed the device keeps its fuses.
  void jtagWriteConfig() {
    Select(Instruction::kProgCommands);
    Send(command::kEnterFuseWrite);
    if (FusesOfDevice() == Fuses::kWithExtended) {
      WriteConfigByte(command::kLoadData | ConfigByte(fuse_byte::kExtended), kWriteFuseExtended);
    }
    WriteConfigByte(command::kLoadData | (ConfigByte(fuse_byte::kHigh) & kWithoutJtagEnable),
                    kWritePageOrFuseHigh);
    WriteConfigByte(command::kLoadData | ConfigByte(fuse_byte::kLow), kWriteEepromFuseLowOrLock);
    Select(Instruction::kProgCommands);
    Send(command::kEnterLockWrite);
    WriteConfigByte(command::kLoadLock | ConfigByte(fuse_byte::kLock), kWriteEepromFuseLowOrLock);
    io.FlushQueue();
  }

  [[nodiscard]] std::int32_t ConfigByte(int place) const {
    return vars.quorinibuffer[image_.config_start + place];
  }

  void WriteConfigByte(std::int32_t load, Commands write) {
    Send(load);
    Send(write);
    io.QueueDelay(run.WriteTime(kPageOrConfigWrite));
  }

  void Select(Instruction instruction) {
    tap_.scanIr(static_cast<std::int32_t>(instruction), kInstructionBits);
  }
  void Send(std::int32_t command) { tap_.scanDr(command, kCommandBits); }
  void Send(Commands commands) {
    for (const std::int32_t command : commands) Send(command);
  }
  void SendAddressHigh(std::int64_t address) {
    Send(command::kAddressHigh | LowByte(address >> 8));
  }
  void SendAddressLow(std::int64_t address) { Send(command::kAddressLow | LowByte(address)); }
  void SendAddress(std::int64_t address) {
    SendAddressHigh(address);
    SendAddressLow(address);
  }

  JtagLines& lines_;  ///< of the window, which other families share
  const ImageLayout image_;
  const std::int64_t page_words_;
  const std::int64_t eeprom_page_bytes_;
};

/// Variant A: the page is a register of one byte, with an Update-DR after each.
class AvrJtagA final : public AvrJtag {
 public:
  AvrJtagA(Run& request, WindowLines& lines) : AvrJtag(request, lines, 4) {}

 private:
  void CapturePage() override {
    for (std::int64_t byte = 0; byte < page_bytes(); ++byte) {
      tap_.CaptureByte();
      tap_.UpdateFromShiftDr();
    }
  }

  void LoadPage(std::int64_t start) override {
    const std::int64_t last = start + page_bytes() - 1;
    for (std::int64_t byte = start; byte < last; ++byte) {
      ShiftByte(byte);
      tap_.UpdateFromExit1();
    }
    ShiftByte(last);
    tap_.FromExit1ToIdle();
  }

  void ShiftByte(std::int64_t image) { tap_.shiftBits(vars.quorinibuffer[image], 8); }
};

/// Variant B: the whole page passes through one long register.
class AvrJtagB final : public AvrJtag {
 public:
  AvrJtagB(Run& request, WindowLines& lines) : AvrJtag(request, lines, 5) {}

 private:
  /// The first byte that comes out is a filler.
  void CapturePage() override {
    tap_.pulseTckN(8);
    for (std::int64_t byte = 0; byte < page_bytes(); ++byte) {
      io.QueueDelay(kBytePause);
      tap_.CaptureByte();
    }
  }

  void LoadPage(std::int64_t start) override {
    for (std::int64_t byte = start; byte < start + page_bytes(); ++byte) {
      io.QueueDelay(kBytePause);
      tap_.ShiftByte(vars.quorinibuffer[byte]);
    }
    tap_.FromShiftDrToIdle();
  }
};

}  // namespace

std::unique_ptr<Family> MakeAvrJtagA(Run& run, WindowLines& lines) {
  return std::make_unique<AvrJtagA>(run, lines);
}

std::unique_ptr<Family> MakeAvrJtagB(Run& run, WindowLines& lines) {
  return std::make_unique<AvrJtagB>(run, lines);
}

}  // namespace fliglaf
