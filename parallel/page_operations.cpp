#include "parallel/page_operations.h"

#include <string>

#include "parallel/start_programmer.h"
#include "usb/request/byte_check.h"
#include "usb/request/notes.h"

namespace fliglaf::parallel {
namespace {

constexpr std::int32_t kPageBytes = 256;
constexpr std::int32_t kProgressBytes = 16;

constexpr std::int32_t kReadPage = 0x30;
constexpr std::int32_t kWritePage = 0x50;

class EngineCheck : public ByteCheck {
 public:
  explicit EngineCheck(EngineRun& run) : ByteCheck(run.vars), run_(run) {}

 private:
  [[nodiscard]] std::u16string Text(int number) const override { return run_.Text(number); }
  [[nodiscard]] std::u16string Hex(std::int32_t value, std::int32_t digits) const override {
    return run_.io.datstr(value, digits);
  }
  void Turn() override { run_.desktop.DoEvents(); }

  EngineRun& run_;
};

/// Where the data buffer has the byte of a device address.
std::int32_t IndexOf(const EngineRun& run, std::int32_t address) {
  const auto& range = run.vars.quorinwltbigendbuf;
  return static_cast<std::int32_t>(std::int64_t{address} - range[0] + range[2]);
}

std::int32_t FirstPage(const EngineRun& run) { return run.RangeStart / kPageBytes; }
std::int32_t EndOfPages(const EngineRun& run) { return run.RangeEnd / kPageBytes; }

void OpenPage(EngineRun& run, std::int32_t instruction, std::int32_t page) {
  SendInstruction(run, {instruction, (page & 0x1F) | 0xE0});
  run.io.DelayMs(run.WriteTime(12));
}

void ProgressAtByte(EngineRun& run, std::int32_t address) {
  if (address % kProgressBytes == 0) ProgressAt(run, address);
}

/// False when the judgement ended the scan.
bool ScanPage(EngineRun& run, std::int32_t page, CheckMode mode) {
  OpenPage(run, kReadPage, page);
  for (std::int32_t i = 0; i < kPageBytes; ++i) {
    const std::int32_t address = page * kPageBytes + i;
    if (dataout(run, TakeByte(run), address, static_cast<std::int16_t>(mode)) == 1) return false;
    ProgressAtByte(run, address);
  }
  run.io.DelayMs(run.WriteTime(8));
  return true;
}

struct Written {
  std::int32_t page;  ///< one past the last page; the page itself when a stop ended the writing
  std::int32_t data = 0;
  std::int32_t address = 0;
};

Written WritePages(EngineRun& run) {
  Written written{FirstPage(run)};
  for (; written.page < EndOfPages(run); ++written.page) {
    OpenPage(run, kWritePage, written.page);
    for (std::int32_t i = 0; i < kPageBytes; ++i) {
      written.address = written.page * kPageBytes + i;
      written.data = run.vars.quorinibuffer[IndexOf(run, written.address)];
      SendInstruction(run, {written.data});
      ProgressAtByte(run, written.address);
    }
    run.io.DelayMs(run.WriteTime(14));
    run.desktop.DoEvents();
    if (run.stopped()) break;
  }
  return written;
}

}  // namespace

std::int32_t dataout(EngineRun& run, std::int16_t data, std::int32_t address, std::int16_t mode) {
  return EngineCheck(run).Judge(
      {.data = static_cast<std::uint8_t>(data), .address = address, .index = IndexOf(run, address)},
      CheckMode{mode});
}

void ScanPages(EngineRun& run, CheckMode mode) {
  const auto& range = run.vars.quorinwltbigendbuf;
  const std::int64_t offset = std::int64_t{range[2]} - range[0];
  const std::int64_t end = std::int64_t{EndOfPages(run)} * kPageBytes;
  RequireData(run, std::int64_t{FirstPage(run)} * kPageBytes + offset, end - 1 + offset);
  for (std::int32_t page = FirstPage(run); page < EndOfPages(run); ++page) {
    if (!ScanPage(run, page, mode)) break;
  }
  run.io.DelayMs(100);
}

void ProgramPages(EngineRun& run) {
  const Written written = WritePages(run);
  if (run.vars.quorinwlverifyvcc[0] != 0) {
    prgnote1(run, 1);
    ScanPages(run, CheckMode::kVerify);
    if (run.outcome() != result::kSuccess) return;
    prgnote1(run, 2);
  } else {
    prgnote1(run, 0);
  }
  ScanPages(run, CheckMode::kVerify);
  run.io.EndProgramming(written.page, 0, written.data, written.address);
}

void EraseAndBlankCheck(EngineRun& run) {
  SendInstruction(run, {0xAC, 0x9F, 0xFF, 0xFF});
  run.io.DelayMs(run.WriteTime(40));
  NoteBlankCheck(run);
  ScanPages(run, CheckMode::kBlankCheck);
}

}  // namespace fliglaf::parallel
