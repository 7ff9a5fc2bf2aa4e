#include <algorithm>

#include "families/read_pass.h"
#include "families/serial_lines.h"
#include "families/serial_page.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using namespace serial;

constexpr std::uint8_t kPassKind = 0x0A;

/// Every instruction begins with it.
constexpr std::uint8_t kStart = 0xAA;
constexpr std::uint8_t kReadPage = 0x30;
constexpr std::uint8_t kWritePage = 0x50;
constexpr std::uint8_t kChipErase = 0x8A;
constexpr std::uint8_t kReadSignature = 0x38;

/// Bytes at the end of the memory size that hold the configuration.
constexpr std::int64_t kConfigBytes = 32;

/// A group of configuration bits: its place below the end of the memory size, its instructions and
/// the bits that the device has.
struct ConfigBits {
  int below_end;
  std::uint8_t write;
  std::uint8_t read;
  std::uint8_t mask;
};
constexpr ConfigBits kConfig[] = {
    {32, 0xE1, 0x61, 0x0F},  // fuse bits
    {31, 0xE4, 0x64, 0x03},  // lock bits
};

std::int64_t CodeBytes(const Run& run) { return run.vars.quorintlength[0] - kConfigBytes; }

std::int64_t PageBytes(const Run& run) {
  return std::max<std::int64_t>(run.vars.quorinpagelength[0], 1);
}

std::uint8_t& ConfigByte(Run& run, const ConfigBits& bits) {
  return run.vars.quorinibuffer[std::int64_t{run.vars.quorintlength[0]} - bits.below_end];
}

/// Select and start of an instruction on the page at `page`; QueueRelease ends it.
void QueuePageInstruction(Run& run, std::uint8_t instruction, std::int64_t page) {
  run.io.QueueRegisterWrite(kSelected, kLineLatch);
  QueueSend(run, kStart);
  QueueSend(run, instruction);
  QueueSend(run, static_cast<std::uint8_t>(page >> 8));
  QueueSend(run, static_cast<std::uint8_t>(page));
}

void QueueRelease(Run& run) { run.io.QueueRegisterWrite(kReleased, kLineLatch); }

bool ReadCode(Run& run, std::int16_t mode) {
  ArmCapture(run);
  for (std::int64_t page = 0; page < CodeBytes(run); page += PageBytes(run)) {
    QueuePageInstruction(run, kReadPage, page);
    for (std::int64_t i = 0; i < PageBytes(run); ++i) QueueCapture(run);
    QueueRelease(run);
    if (!GoesOn(run, page)) return false;
  }
  return FetchAndHandOver(run, kBlockAndEndMark, CodeBytes(run), 0, mode);
}

bool WriteCode(Run& run) {
  for (std::int64_t page = 0; page < CodeBytes(run); page += PageBytes(run)) {
    QueuePageInstruction(run, kWritePage, page);
    for (std::int64_t i = 0; i < PageBytes(run); ++i) {
      QueueSend(run, run.vars.quorinibuffer[page + i]);
    }
    QueueRelease(run);
    run.io.QueueDelay(run.WriteTime(1));
    if (!GoesOn(run, page)) return false;
  }
  return true;
}

void WriteBits(Run& run, const ConfigBits& bits) {
  run.io.WriteRegister(kSelected, kLineLatch);
  const auto value = static_cast<std::uint8_t>(ConfigByte(run, bits) & bits.mask);
  Send(run, {kStart, bits.write, 0x00, 0x00, value});
  run.io.WriteRegister(kReleased, kLineLatch);
}

void ReadBits(Run& run, const ConfigBits& bits) {
  run.io.WriteRegister(kSelected, kLineLatch);
  Send(run, {kStart, bits.read, 0x00, 0x00});
  const std::uint8_t answer = Receive(run);
  run.io.WriteRegister(kReleased, kLineLatch);
  ConfigByte(run, bits) = answer;
}

}  // namespace

void dataOp15(Run& run, std::int16_t mode) {
  RequireOneBlock(CodeBytes(run));
  OpenPass(run, kPassKind);
  static_cast<void>(ReadCode(run, mode));  // every way out closes the pass
  ClosePass(run);
}

void program15(Run& run) {
  RequireOneBlock(CodeBytes(run));  // it is read back in the end
  if (!WriteCode(run)) return;
  run.io.FlushQueue();
  run.io.DelayMs(100);
  VerifyProgrammed(run, dataOp15);
}

void erase15(Run& run) {
  RequireOneBlock(CodeBytes(run));  // for the blank check
  run.io.WriteLatch(kSelected, kLineLatch);
  Send(run, {kStart, kChipErase});
  run.io.WriteLatch(kReleased, kLineLatch);
  run.io.ShortDelay(run.WriteTime(2));
  NoteBlankCheck(run);
  dataOp15(run, check_mode::kBlankCheck);
}

void config15(Run& run, std::string_view direction) {
  if (direction == "input") {
    for (const ConfigBits& bits : kConfig) WriteBits(run, bits);
  } else if (direction == "output") {
    for (const ConfigBits& bits : kConfig) ReadBits(run, bits);
  }
}

std::array<std::uint8_t, 3> fam15Signature(Run& run) {
  std::array<std::uint8_t, 3> bytes{};
  run.io.WriteLatch(kSelected, kLineLatch);
  Send(run, {kStart, kReadSignature, 0x00, 0x00});
  for (std::uint8_t& byte : bytes) byte = Receive(run);
  run.io.WriteLatch(kReleased, kLineLatch);
  return bytes;
}

}  // namespace fliglaf
