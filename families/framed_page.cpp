#include "families/framed_page.h"

#include <algorithm>

#include "families/serial_lines.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

/// First byte of every instruction.
constexpr std::uint8_t kStart = 0xAA;
constexpr std::uint8_t kReadPage = 0x30;
constexpr std::uint8_t kWritePage = 0x50;
constexpr std::uint8_t kChipErase = 0x8A;
constexpr std::uint8_t kReadSignature = 0x38;

// Values of the line latch: the select line is low while an instruction is sent.
constexpr std::uint8_t kSelected = SerialLines::kIdleOutputs;
constexpr std::uint8_t kReleased = SerialLines::kIdleOutputs | 0x04;

// Pauses, in units of the write time.
constexpr std::int32_t kPageWrite = 1;
constexpr std::int32_t kErase = 2;

/// A group of configuration bits: which configuration byte of the image holds it, the instruction
/// that writes it, and the bits that the device has.
struct ConfigBits {
  int index;
  std::uint8_t write;
  std::uint8_t mask;
};
constexpr ConfigBits kConfig[] = {
    {0, 0xE1, 0x0F},  // fuse bits
    {1, 0xE4, 0x03},  // lock bits
};

class FramedPage : public Family {
 public:
  explicit FramedPage(Run& request)
      : Family(request),
        lines_(request),
        image_(LayoutOf(15, SizesOf(vars))),
        page_bytes_(std::max<std::int64_t>(vars.quorinpagelength[0], 1)) {}

  /// Nothing answers the programming enable.
  void Enter() override {
    run.SelectLineMode(LineMode::kStandard);
    lines_.SetUp(ResetLevel::kLow);
    io.ShortDelay(10);
    lines_.SetReset(ResetLevel::kHigh);
    Release();
    io.DelayMs(20);
    Release();
    lines_.SetReset(ResetLevel::kHigh);
    lines_.ConfigureShifter(ShifterLength::kSerial);
    Select();
    lines_.Send({kStart, SerialLines::kControl, SerialLines::kEnable});
    Release();
  }
  void ReadPass(CheckMode mode) override { dataOp15(mode); }
  void Program() override { program15(); }
  void Code8() override { erase15(); }
  void Code9() override { config15(); }

  Signature ReadSignature() override {
    Signature bytes{};
    Select();
    lines_.Send({kStart, kReadSignature, 0x00, 0x00});
    for (std::uint8_t& byte : bytes) byte = lines_.Receive();
    Release();
    return bytes;
  }

 private:
  /// A read leaves the configuration bytes of the image alone.
  void dataOp15(CheckMode mode) {
    RequireOneBlock(image_.main_bytes);
    OpenPass(PassKind::kBlocks);
    static_cast<void>(ReadCode(mode));  // every way out closes the pass
    ClosePass();
  }

  /// A stop leaves at once.
  void program15() {
    RequireOneBlock(image_.main_bytes);  // for the verify
    if (!WriteCode()) return;
    io.FlushQueue();
    io.DelayMs(100);
    VerifyProgrammed();
  }

  void erase15() {
    RequireOneBlock(image_.main_bytes);  // for the blank check
    Select();
    lines_.Send({kStart, kChipErase});
    Release();
    io.ShortDelay(run.WriteTime(kErase));
    NoteBlankCheck(run);
    dataOp15(CheckMode::kBlankCheck);
  }

  /// Writes the configuration of the image to the device.
  void config15() {
    for (const ConfigBits& bits : kConfig) {
      const std::uint8_t byte = vars.quorinibuffer[image_.config_start + bits.index];
      io.WriteRegister(kSelected, SerialLines::kLineLatch);
      lines_.Send({kStart, bits.write, 0x00, 0x00, static_cast<std::uint8_t>(byte & bits.mask)});
      io.WriteRegister(kReleased, SerialLines::kLineLatch);
    }
  }

  void Select() { io.WriteLatch(kSelected, SerialLines::kLineLatch); }
  void Release() { io.WriteLatch(kReleased, SerialLines::kLineLatch); }

  bool ReadCode(CheckMode mode) {
    ArmCapture();
    for (std::int64_t page = 0; page < image_.main_bytes; page += page_bytes_) {
      QueuePageInstruction(kReadPage, page);
      for (std::int64_t i = 0; i < page_bytes_; ++i) lines_.QueueCapture();
      QueueRelease();
      if (!GoesOn(page)) return false;
    }
    return FetchAndJudge({.bytes = image_.main_bytes, .image = 0}, mode);
  }

  bool WriteCode() {
    for (std::int64_t page = 0; page < image_.main_bytes; page += page_bytes_) {
      QueuePageInstruction(kWritePage, page);
      for (std::int64_t i = 0; i < page_bytes_; ++i) {
        lines_.QueueSend(vars.quorinibuffer[page + i]);
      }
      QueueRelease();
      io.QueueDelay(run.WriteTime(kPageWrite));
      if (!GoesOn(page)) return false;
    }
    return true;
  }

  /// Select and start of an instruction on the page at `page`; QueueRelease ends it.
  void QueuePageInstruction(std::uint8_t instruction, std::int64_t page) {
    io.QueueRegisterWrite(kSelected, SerialLines::kLineLatch);
    lines_.QueueSend(kStart, instruction, static_cast<std::uint8_t>(page >> 8),
                     static_cast<std::uint8_t>(page));
  }

  void QueueRelease() { io.QueueRegisterWrite(kReleased, SerialLines::kLineLatch); }

  SerialLines lines_;
  const ImageLayout image_;
  const std::int64_t page_bytes_;
};

}  // namespace

std::unique_ptr<Family> MakeFramedPage(Run& run, WindowLines& /*lines*/) {
  return std::make_unique<FramedPage>(run);
}

}  // namespace fliglaf
