#include <algorithm>

#include "families/read_pass.h"
#include "families/serial_isp.h"
#include "families/serial_lines.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using namespace serial;

constexpr std::uint8_t kReadPage = 0x30;
constexpr std::uint8_t kWritePage = 0x50;
constexpr std::uint8_t kReadSignature = 0x28;

constexpr std::int32_t kPageBytes = 256;
constexpr std::int32_t kProgressBytes = 16;
constexpr std::uint8_t kPassKind = 0x10;
constexpr int kCapturesOfABlock = 10;

/// The address byte of a page instruction: bits 8 to 12 of the address, the upper three bits set.
std::uint8_t PageByte(std::int32_t address) {
  return static_cast<std::uint8_t>(0xE0 | (address >> 8 & 0x1F));
}

void QueuePageReads(Run& run, std::int32_t block_start, std::int32_t last) {
  for (std::int32_t offset = 0; offset <= last; offset += kPageBytes) {
    QueueSend(run, kReadPage);
    QueueSend(run, PageByte(block_start + offset));
    for (std::int32_t i = 0; i < kPageBytes; ++i) {
      QueueCapture(run);
      if (i % kProgressBytes == 0) ProgressAt(run, std::int64_t{block_start} + offset + i);
    }
  }
}

/// Captures a block until it comes back whole; false after a stop or ten attempts.
bool CaptureBlock(Run& run, std::int32_t block_start, std::int32_t last) {
  for (int attempt = 0; attempt < kCapturesOfABlock; ++attempt) {
    ArmCapture(run);
    QueuePageReads(run, block_start, last);
    if (FetchCaptures(run, WholePackets(last + 1))) return true;
    if (run.stopped()) return false;
  }
  run.vars.quorinprgresult[0] = result::kReadBackFails;
  return false;
}

void ReadBlocks(Run& run, std::int16_t mode) {
  if (run.RangeEnd < 0) return;
  RequireData(run, 0, run.RangeEnd);
  for (std::int32_t block = 0; block <= run.RangeEnd / kBlockBytes; ++block) {
    const std::int32_t start = block * kBlockBytes;
    const std::int32_t last = std::min(run.RangeEnd - start, kBlockBytes - 1);
    if (!CaptureBlock(run, start, last)) return;
    if (!HandOver(run, last, start, mode)) return;
  }
}

void WritePage(Run& run, std::int32_t address) {
  QueueSend(run, kWritePage);
  QueueSend(run, PageByte(address));
  for (std::int32_t i = 0; i < kPageBytes; ++i) {
    QueueSend(run, run.vars.quorinibuffer[address + i]);
    run.io.QueueDelay(run.WriteTime(10));
    if (i % kProgressBytes == 0) ProgressAt(run, address + i);
  }
  run.io.FlushQueue();
}

/// The programming enable again, without a reset; the answer is not looked at.
void ReEnable(Run& run) {
  run.io.WriteLatch(0x00, kResetMaskLatch);
  run.io.WriteLatch(kResetHigh, kResetLatch);
  Send(run, {0xAC, 0x53, 0xFF});
  Receive(run);
}

}  // namespace

void ispFam1ReadPass(Run& run, std::int16_t mode) {
  OpenPass(run, kPassKind);
  ReadBlocks(run, mode);
  ClosePass(run);
}

void ispFam1Program(Run& run) {
  const std::int32_t first_page = run.RangeStart / kPageBytes;
  const std::int32_t last_page = run.vars.quorintlength[0] / kPageBytes - 1;
  RequireData(run, std::int64_t{first_page} * kPageBytes,
              (std::int64_t{last_page} + 1) * kPageBytes - 1);
  OpenPass(run, kPassKind);
  for (std::int32_t page = first_page; page <= last_page; ++page) {
    WritePage(run, page * kPageBytes);
    run.desktop.DoEvents();
    if (run.stopped()) return ClosePass(run);
    ReEnable(run);
  }
  run.io.FlushQueue();
  run.io.DelayMs(50);
  VerifyPoweredAnew(run, ispFam1ReadPass);
}

void ispWriteLockLevels(Run& run, std::uint8_t selector) {
  for (int level = 1; level <= selector + 1; ++level) {
    Send(run, {0xAC, static_cast<std::uint8_t>(0xE0 | level), 0xFF, 0xFF});
  }
  run.io.DelayMs(run.WriteTime(40));
}

void ispFam1Op11(Run& run) {
  Send(run, {0xAC, 0x9F, 0xFF, 0xFF});
  run.io.DelayMs(run.WriteTime(40));
  NoteBlankCheck(run);
  ispFam1ReadPass(run, check_mode::kBlankCheck);
}

std::array<std::uint8_t, 3> ispFam1Signature(Run& run) {
  std::array<std::uint8_t, 3> bytes{};
  std::uint8_t address = 0;
  for (std::uint8_t& byte : bytes) {
    Send(run, {kReadSignature, address++, 0x00});
    byte = Receive(run);
  }
  return bytes;
}

}  // namespace fliglaf
