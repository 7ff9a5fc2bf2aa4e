#include "families/isp_fam1.h"

#include <algorithm>

#include "families/serial_lines.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

constexpr std::uint8_t kReadPage = 0x30;
constexpr std::uint8_t kWritePage = 0x50;
constexpr std::uint8_t kReadSignature = 0x28;
constexpr std::uint8_t kChipErase = 0x9F;
constexpr std::uint8_t kWriteLock = 0xE0;
constexpr std::uint8_t kAnyData = 0xFF;  ///< in place of a byte that the device ignores

constexpr std::uint8_t kEnableAnswer = 0x69;
constexpr int kEnableAttempts = 25;
/// Stays high: it opens the buffer of the device's answer.
constexpr std::uint8_t kAnswerBuffer = 0x20;

constexpr std::int32_t kPageBytes = 256;
constexpr std::int32_t kProgressBytes = 16;
constexpr int kCapturesOfABlock = 10;

// Pauses, in units of the write time.
constexpr std::int32_t kByteWrite = 10;
constexpr std::int32_t kEraseOrLock = 40;

/// The address byte of a page instruction: bits 8 to 12 of the address, the upper three bits set.
std::uint8_t PageByte(std::int32_t address) {
  return static_cast<std::uint8_t>(0xE0 | (address >> 8 & 0x1F));
}

class IspFam1 : public Family {
 public:
  explicit IspFam1(Run& request) : Family(request), lines_(request) {}

  /// A device that never answers the programming enable is left to the operation to find.
  void Enter() override {
    run.SelectLineMode(LineMode::kStandard);
    lines_.SetUp(ResetLevel::kHigh);
    io.DelayMs(100);
    lines_.ConfigureShifter(ShifterLength::kSerial, SerialLines::kIdleOutputs | kAnswerBuffer);
    for (int attempt = 0; attempt < kEnableAttempts; ++attempt) {
      lines_.SetReset(ResetLevel::kLow);
      lines_.SetReset(ResetLevel::kHigh);
      io.DelayMs(100);
      const std::uint8_t answer = EnableProgramming();
      io.DelayMs(100);
      if (answer == kEnableAnswer) return;
    }
  }
  void ReadPass(CheckMode mode) override { ispFam1ReadPass(mode); }
  void Program() override { ispFam1Program(); }
  void Code8() override { ispWriteLockLevels(0); }
  void Code9() override { ispWriteLockLevels(1); }
  void Code10() override { ispWriteLockLevels(2); }
  void Code11() override { ispFam1Op11(); }

  Signature ReadSignature() override {
    Signature bytes{};
    std::uint8_t address = 0;
    for (std::uint8_t& byte : bytes) {
      lines_.Send({kReadSignature, address++, 0x00});
      byte = lines_.Receive();
    }
    return bytes;
  }

 private:
  void ispFam1ReadPass(CheckMode mode) {
    OpenPass(PassKind::kBytes);
    ReadBlocks(mode);
    ClosePass();
  }

  /// Writes the pages from RangeStart to the end of the memory, then verifies.
  void ispFam1Program() {
    const std::int32_t first_page = run.RangeStart / kPageBytes;
    const std::int32_t last_page = vars.quorintlength[0] / kPageBytes - 1;
    RequireData(run, std::int64_t{first_page} * kPageBytes,
                (std::int64_t{last_page} + 1) * kPageBytes - 1);
    OpenPass(PassKind::kBytes);
    for (std::int32_t page = first_page; page <= last_page; ++page) {
      WritePage(page * kPageBytes);
      run.desktop.DoEvents();
      if (run.stopped()) return ClosePass();
      EnableAgain();
    }
    io.FlushQueue();
    io.DelayMs(50);
    VerifyAfterPowerUp();
  }

  /// Writes lock levels 1 to `selector` + 1: each needs the one below it.
  void ispWriteLockLevels(std::uint8_t selector) {
    for (int level = 1; level <= selector + 1; ++level) {
      lines_.SendControl({static_cast<std::uint8_t>(kWriteLock | level), kAnyData, kAnyData});
    }
    io.DelayMs(run.WriteTime(kEraseOrLock));
  }

  void ispFam1Op11() {
    lines_.SendControl({kChipErase, kAnyData, kAnyData});
    io.DelayMs(run.WriteTime(kEraseOrLock));
    NoteBlankCheck(run);
    ispFam1ReadPass(CheckMode::kBlankCheck);
  }

  /// Sends the programming enable. Returns the device's answer.
  std::uint8_t EnableProgramming() {
    lines_.SendControl({SerialLines::kEnable, kAnyData});
    return lines_.Receive();
  }

  /// The programming enable that each page needs, without a reset; its answer is ignored.
  void EnableAgain() {
    lines_.DriveReset(ResetLevel::kHigh);
    static_cast<void>(EnableProgramming());
  }

  void ReadBlocks(CheckMode mode) {
    if (run.RangeEnd < 0) return;
    RequireData(run, 0, run.RangeEnd);
    for (std::int32_t block = 0; block <= run.RangeEnd / kBlockBytes; ++block) {
      const std::int32_t start = block * kBlockBytes;
      const std::int32_t last = std::min(run.RangeEnd - start, kBlockBytes - 1);
      if (!CaptureBlock(start, last)) return;
      if (!HandOver({.bytes = std::int64_t{last} + 1, .image = start}, mode)) return;
    }
  }

  /// Captures a block until all of it has come; false after a stop or ten attempts.
  bool CaptureBlock(std::int32_t start, std::int32_t last) {
    for (int attempt = 0; attempt < kCapturesOfABlock; ++attempt) {
      ArmCapture();
      QueuePageReads(start, last);
      if (FetchCaptures(WholePackets(std::int64_t{last} + 1))) return true;
      if (run.stopped()) return false;
    }
    vars.quorinprgresult[0] = result::kReadBackFails;
    return false;
  }

  void QueuePageReads(std::int32_t block_start, std::int32_t last) {
    for (std::int32_t offset = 0; offset <= last; offset += kPageBytes) {
      lines_.QueueSend(kReadPage, PageByte(block_start + offset));
      for (std::int32_t i = 0; i < kPageBytes; ++i) {
        lines_.QueueCapture();
        if (i % kProgressBytes == 0) ProgressAt(std::int64_t{block_start} + offset + i);
      }
    }
  }

  void WritePage(std::int32_t address) {
    lines_.QueueSend(kWritePage, PageByte(address));
    for (std::int32_t i = 0; i < kPageBytes; ++i) {
      lines_.QueueSend(vars.quorinibuffer[address + i]);
      io.QueueDelay(run.WriteTime(kByteWrite));
      if (i % kProgressBytes == 0) ProgressAt(address + i);
    }
    io.FlushQueue();
  }

  SerialLines lines_;
};

}  // namespace

std::unique_ptr<Family> MakeIspFam1(Run& run, WindowLines& /*lines*/) {
  return std::make_unique<IspFam1>(run);
}

}  // namespace fliglaf
