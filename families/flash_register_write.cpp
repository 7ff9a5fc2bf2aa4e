#include <cstdint>

#include "families/flash_register.h"
#include "families/flash_register_access.h"
#include "families/jtag_lines.h"
#include "families/read_pass.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using namespace flash_register;

/// Multiples of the write time.
constexpr std::int32_t kEraseTimes = 500;
constexpr std::int32_t kFamily9EraseTimes = 600;
constexpr std::int32_t kLockTimes = 300;

void ProgramByte(Run& run, std::int32_t command, std::int64_t image, std::int32_t times) {
  WriteControl(run, command);
  WriteData(run, run.vars.quorinibuffer[image]);
  run.io.QueueDelay(run.WriteTime(times));
}

/// Image bytes `first` to `end` - 1 to the same addresses of the device. False after a stop.
bool ProgramRange(Run& run, std::int64_t first, std::int64_t end, std::int16_t width,
                  std::int32_t times) {
  WriteScale(run, scale::kSingle);
  WriteAddress(run, first, width);
  for (std::int64_t address = first; address < end; ++address) {
    ProgramByte(run, control::kProgram, address, times);
    if (!GoesOn(run, address)) return false;
  }
  return true;
}

/// The second area of families 10 and 11, addressed from 0.
bool ProgramSecondArea(Run& run) {
  const Layout layout(run);
  for (std::int64_t i = 0; i < layout.second_bytes; ++i) {
    WriteScale(run, scale::kSingle);
    WriteAddress(run, i, run.flash.addressWidth);
    ProgramByte(run, control::kProgram | control::kSecondArea, layout.second_start + i, 1);
    if (!GoesOn(run, i)) return false;
  }
  return true;
}

bool Program8(Run& run) {
  const Layout layout(run);
  if (!ProgramRange(run, 0, layout.main_bytes, kNarrowAddress, 1)) return false;
  FlushAndWait(run);
  if (!ProgramRange(run, layout.second_start, layout.size, kNarrowAddress, 1)) return false;
  FlushAndWait(run);
  return true;
}

bool Program9(Run& run) {
  const Layout layout(run);
  if (!ProgramRange(run, 0, layout.main_bytes, kNarrowAddress, 1) ||
      !ProgramRange(run, layout.last_page(), layout.size, kNarrowAddress, 1)) {
    return false;
  }
  FlushAndWait(run);
  return true;
}

/// A stop while it is written leaves out the lock bytes, not the verify.
void Program(Run& run, bool (*write)(Run&), void (*read_pass)(Run&, std::int16_t)) {
  enterFlashAccess(run);
  FlushAndWait(run);
  if (write(run)) flashReadLock(run, check_mode::kRead);
  FlushAndWait(run);
  VerifyProgrammed(run, read_pass);
}

bool Program10(Run& run) {
  if (!ProgramRange(run, 0, Layout(run).main_bytes, run.flash.addressWidth, 2)) return false;
  FlushAndWait(run);
  return ProgramSecondArea(run);
}

/// A first pass that fails is made again, Retries() times at most: a device that keeps
/// failing must not hold the host for ever.
void VerifyAtTwoSupplies(Run& run) {
  for (int repeats = 0;; ++repeats) {
    FlushAndWait(run);
    prgnote1(run, 1);
    flashDataOp10(run, check_mode::kVerify);
    if (run.outcome() == result::kSuccess) break;
    if (run.stopped() || repeats >= run.Retries()) return;
    run.vars.quorinprgresult[0] = result::kSuccess;
  }
  prgnote1(run, 2);
  flashDataOp10(run, check_mode::kVerify);
}

void Verify10(Run& run) {
  if (run.vars.quorinwlverifyvcc[0] != 0) return VerifyAtTwoSupplies(run);
  FlushAndWait(run);
  VerifyProgrammed(run, flashDataOp10);
}

/// With the data register holding its key.
void ErasePage(Run& run, std::int64_t address, std::int16_t width, std::int32_t command,
               std::int32_t times) {
  WriteScale(run, scale::kSingle);
  WriteAddress(run, address, width);
  WriteControl(run, command);
  WriteData(run, kEraseKey);
  run.io.QueueDelay(run.WriteTime(times));
}

/// All pages of the one address space, and the one that follows a size of whole pages.
void EraseDown(Run& run, std::int32_t times) {
  const Layout layout(run);
  for (std::int64_t page = layout.size / layout.page; page >= 0; --page) {
    ErasePage(run, page * layout.page, kNarrowAddress, control::kErasePage, times);
  }
  FlushAndWait(run);
}

}  // namespace

void flashProgram8(Run& run) { Program(run, Program8, flashDataOp8); }

void flashProgram9(Run& run) { Program(run, Program9, flashDataOp9); }

void flashProgram10(Run& run) {
  enterFlashAccess(run);
  FlushAndWait(run);
  if (Program10(run)) {
    flashReadLock(run, check_mode::kRead);
    Verify10(run);
  }
  FlushAndWait(run);
}

void flashErase8(Run& run) {
  enterFlashAccess(run);
  EraseDown(run, kEraseTimes);
  NoteBlankCheck(run);
  flashDataOp8(run, check_mode::kBlankCheck);
}

void flashErase9(Run& run) {
  enterFlashAccess(run);
  resetTap(run);
  FlushAndWait(run);
  EraseDown(run, kFamily9EraseTimes);
  NoteBlankCheck(run);
  flashDataOp9(run, check_mode::kBlankCheck);
}

void flashErase10(Run& run) {
  constexpr std::int64_t kSecondAreaPage = 0x400;
  const Layout layout(run);
  const std::int16_t width = run.flash.addressWidth;
  const std::int64_t pages = layout.size / layout.page;
  const std::int64_t first = run.vars.quorinwltbigendbuf[0];
  enterFlashAccess(run);
  FlushAndWait(run);
  for (std::int64_t page = pages - 1; page >= 0; --page) {
    ErasePage(run, page * layout.page, width, control::kErasePage, kEraseTimes);
    run.Progress(pages - page - first, pages - first + 1);
  }
  FlushAndWait(run);
  ErasePage(run, kSecondAreaPage, width, control::kErasePage | control::kSecondArea, kEraseTimes);
  FlushAndWait(run);
  NoteBlankCheck(run);
  flashDataOp10(run, check_mode::kBlankCheck);
}

void flashWriteLock(Run& run) {
  const std::int64_t lock = Layout(run).lock_bytes();
  resetTap(run);
  enterFlashAccess(run);
  WriteScale(run, scale::kSingle);
  WriteAddress(run, lock, run.flash.addressWidth);
  for (int k = 0; k < 2; ++k) ProgramByte(run, control::kProgram, lock + k, kLockTimes);
  FlushAndWait(run);
}

}  // namespace fliglaf
