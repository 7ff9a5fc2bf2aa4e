#include <algorithm>

#include "families/avr_jtag.h"
#include "families/avr_jtag_steps.h"
#include "families/jtag_lines.h"
#include "families/read_pass.h"
#include "usb/components/bits.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using namespace avr_jtag;

/// JTAGEN in the high fuse byte: 0 keeps the interface open.
constexpr std::int32_t kWithoutJtagEnable = 0xBF;

/// A page's words byte by byte, each loaded on the way through Update-DR. Ends in Run-Test/Idle.
void LoadByteWise(Run& run, std::int64_t page, std::int64_t words) {
  const std::int64_t last = 2 * (page + words) - 1;
  for (std::int64_t byte = 2 * page; byte <= last; ++byte) {
    shiftBits(run, run.vars.quorinibuffer[byte], 8);
    const std::int16_t pulses = byte < last ? 2 : 1;
    setTms(run, 1);
    pulseTckN(run, pulses);
    setTms(run, 0);
    pulseTckN(run, pulses);
  }
}

/// A page's words in one stream. Ends in Run-Test/Idle.
void LoadStream(Run& run, std::int64_t page, std::int64_t words) {
  for (std::int64_t byte = 2 * page; byte < 2 * (page + words); ++byte) {
    run.io.QueueDelay(2);
    run.io.QueueRegisterWrite(reverseBits(run.vars.quorinibuffer[byte], 8), reg::kShiftOut);
  }
  setTms(run, 1);
  pulseTckN(run, 2);
  setTms(run, 0);
  pulseTck(run);
}

void WriteFlash(Run& run, Variant variant) {
  const auto load = variant == Variant::kByteRegister ? LoadByteWise : LoadStream;
  Select(run, Instruction::kProgCommands);
  Scan(run, {command::kEnterFlashWrite});
  for (std::int64_t page = 0; page < FlashWords(run); page += PageWords(run)) {
    ScanAddressHigh(run, page);
    ScanAddressLow(run, page);
    Select(run, Instruction::kProgPageLoad);
    WalkToShiftDr(run);
    load(run, page, PageWords(run));
    Select(run, Instruction::kProgCommands);
    Scan(run, kWritePageOrFuseHigh);
    run.io.QueueDelay(run.WriteTime(1));
    ProgressAt(run, page);
  }
  run.io.FlushQueue();
}

/// A sixteenth of the flash page in words, rounded to the nearest, ties to even; one byte at least.
std::int64_t EepromPageBytes(const Run& run) {
  const std::int64_t words = run.vars.quorinpagelength[0];
  const std::int64_t whole = words / 16;
  const std::int64_t rest = words % 16;
  const bool up = rest > 8 || (rest == 8 && whole % 2 != 0);
  return std::max<std::int64_t>(up ? whole + 1 : whole, 1);
}

void WriteEeprom(Run& run) {
  const std::int64_t start = 2 * FlashWords(run);
  const std::int64_t page_bytes = EepromPageBytes(run);
  Select(run, Instruction::kProgCommands);
  Scan(run, {command::kEnterEepromWrite});
  for (std::int64_t page = 0; page < EepromBytes(run); page += page_bytes) {
    ScanAddressHigh(run, page);
    for (std::int64_t k = 0; k < page_bytes; ++k) {
      ScanAddressLow(run, page | k);
      Scan(run,
           {command::kLoadData | run.vars.quorinibuffer[start + page + k], 0x3700, 0x7700, 0x3700});
    }
    Scan(run, kWriteEepromOrFuseLow);
    run.io.QueueDelay(run.WriteTime(1));
    ProgressAt(run, page);
  }
  run.io.FlushQueue();
}

/// Chip erase, with the note of the blank check that follows it.
void jtagChipErase(Run& run) {
  RequireImage(run);
  Select(run, Instruction::kProgCommands);
  Scan(run, {0x2380, 0x3180, 0x3380, 0x3380});
  run.io.QueueDelay(run.WriteTime(2));
  run.io.FlushQueue();
  NoteBlankCheck(run);
}

void Program(Run& run, Variant variant, void (*read_pass)(Run&, std::int16_t)) {
  RequireImage(run);  // ahead of what could not be verified
  WriteFlash(run, variant);
  WriteEeprom(run);
  VerifyProgrammed(run, read_pass);
}

void WriteConfigByte(Run& run, std::int32_t load, std::initializer_list<std::int32_t> write) {
  Scan(run, {load});
  Scan(run, write);
  run.io.QueueDelay(run.WriteTime(1));
}

}  // namespace

void jtagAProgram(Run& run) { Program(run, Variant::kByteRegister, jtagAReadPass); }

void jtagBProgram(Run& run) { Program(run, Variant::kLongRegister, jtagBReadPass); }

void jtagAErase(Run& run) {
  jtagChipErase(run);
  jtagAReadPass(run, check_mode::kBlankCheck);
}

void jtagBErase(Run& run) {
  jtagChipErase(run);
  jtagBReadPass(run, check_mode::kBlankCheck);
}

void jtagWriteConfig(Run& run) {
  const auto image = [&run, start = ConfigStart(run)](int place) -> std::int32_t {
    return run.vars.quorinibuffer[start + place];
  };
  const std::optional<FuseBytes> fuses = FusesOf(run);
  Select(run, Instruction::kProgCommands);
  Scan(run, {command::kEnterFuseWrite});
  if (fuses && fuses->extended) {
    WriteConfigByte(run, command::kLoadData | image(config_byte::kFuseExtended),
                    kWriteFuseExtended);
  }
  WriteConfigByte(run, command::kLoadData | (image(config_byte::kFuseHigh) & kWithoutJtagEnable),
                  kWritePageOrFuseHigh);
  WriteConfigByte(run, command::kLoadData | image(config_byte::kFuseLow), kWriteEepromOrFuseLow);
  Select(run, Instruction::kProgCommands);
  Scan(run, {command::kEnterLockWrite});
  WriteConfigByte(run, command::kLoadLock | image(config_byte::kLock), kWriteEepromOrFuseLow);
  run.io.FlushQueue();
}

}  // namespace fliglaf
