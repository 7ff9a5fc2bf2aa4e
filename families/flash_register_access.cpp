#include "families/flash_register_access.h"

#include <algorithm>

#include "families/jtag_lines.h"
#include "families/read_pass.h"

namespace fliglaf::flash_register {
namespace {

constexpr std::int16_t kInstructionBits = 16;
constexpr std::int16_t kByteBits = 8;
constexpr std::int16_t kCaptureBits = 10;

}  // namespace

void enterFlashAccess(Run& run) {
  scanIr(run, 0x2FFF, kInstructionBits);
  scanIr(run, 0x1004, kInstructionBits);
  scanDr(run, 0, 32);
}

void writeFlashReg(Run& run, std::int32_t instruction, std::int32_t value, std::int16_t width) {
  constexpr std::int32_t kWrite = 3;  // the last two bits of the scan
  scanIr(run, instruction, kInstructionBits);
  scanDr(run, value | kWrite << width, static_cast<std::int16_t>(width + 2));
}

void readFlashReg(Run& run, std::int32_t instruction, std::int16_t width) {
  constexpr std::int32_t kRead = 2;
  scanIr(run, instruction, kInstructionBits);
  scanDr(run, kRead, 2);
  scanDrCapture(run, 0, static_cast<std::int16_t>(width + 1));
}

void WriteScale(Run& run, std::int32_t value) {
  writeFlashReg(run, run.flash.regScale, value, kByteBits);
}

void WriteAddress(Run& run, std::int64_t address, std::int16_t width) {
  writeFlashReg(run, run.flash.regAddress, static_cast<std::int32_t>(address), width);
}

void WriteControl(Run& run, std::int32_t value) {
  writeFlashReg(run, run.flash.regControl, value, kByteBits);
}

void WriteData(Run& run, std::int32_t value) {
  writeFlashReg(run, run.flash.regData, value, kByteBits);
}

void StartRead(Run& run) { readFlashReg(run, run.flash.regData, 0); }

void CaptureByte(Run& run) { readFlashReg(run, run.flash.regData, kCaptureBits); }

void FlushAndWait(Run& run) {
  run.io.FlushQueue();
  run.io.DelayMs(100);
}

Layout::Layout(const Run& run)
    : second_bytes(run.vars.quorinbvcch[0]),
      size(run.vars.quorintlength[0]),
      page(run.vars.quorinpagelength[0]) {
  second_start = size - second_bytes;
  main_bytes = second_start - page - 2;
  page = std::max<std::int64_t>(page, 1);
  RequireData(run, 0, std::max(size, main_bytes) - 1);
}

void flashReadLock(Run& run, std::int16_t mode) {
  const Layout layout(run);
  ArmCapture(run);
  WriteScale(run, scale::kSingle);
  WriteAddress(run, layout.lock_bytes(), run.flash.addressWidth);
  for (int k = 0; k < 2; ++k) {
    WriteControl(run, control::kReadByte);
    StartRead(run);
    CaptureByte(run);
  }
  static_cast<void>(
      FetchAndHandOver(run, kBlockAndEndMark, 2, layout.lock_bytes(), mode, BitOrder::kLowFirst));
  ClosePass(run);
}

}  // namespace fliglaf::flash_register
