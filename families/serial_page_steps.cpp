#include "families/serial_page_steps.h"

#include <algorithm>

#include "families/read_pass.h"
#include "families/serial_lines.h"
#include "usb/request/notes.h"

namespace fliglaf::serial_page {
namespace {

using namespace serial;

constexpr std::uint8_t kPassKind = 0x0A;

constexpr std::uint8_t kControl = 0xAC;
constexpr std::uint8_t kChipErase = 0x80;
constexpr std::uint8_t kReadFlashLow = 0x20;
constexpr std::uint8_t kReadFlashHigh = 0x28;
constexpr std::uint8_t kLoadPageLow = 0x40;
constexpr std::uint8_t kLoadPageHigh = 0x48;
constexpr std::uint8_t kWritePage = 0x4C;
constexpr std::uint8_t kReadEeprom = 0xA0;
constexpr std::uint8_t kWriteEeprom = 0xC0;

/// Words at the end of the memory size that hold the configuration bytes.
constexpr std::int64_t kConfigWords = 16;

std::int64_t EepromBytes(const Run& run) { return run.vars.quorinbvcch[0]; }

/// What flash, in words, the memory size leaves.
std::int64_t FlashWords(const Run& run) {
  return run.vars.quorintlength[0] - EepromBytes(run) - kConfigWords;
}

/// Every operation ends in a pass over flash and EEPROM; none begins where that cannot be.
void RequireReadable(const Run& run) {
  RequireOneBlock(2 * FlashWords(run));
  RequireOneBlock(EepromBytes(run));
}

void QueueAddressed(Run& run, std::uint8_t instruction, std::int64_t address) {
  QueueSend(run, instruction);
  QueueSend(run, static_cast<std::uint8_t>(address >> 8));
  QueueSend(run, static_cast<std::uint8_t>(address));
}

bool ReadFlash(Run& run, std::int16_t mode, std::int32_t gap) {
  ArmCapture(run);
  const std::int64_t words = FlashWords(run);
  for (std::int64_t word = 0; word < words; ++word) {
    for (const std::uint8_t instruction : {kReadFlashLow, kReadFlashHigh}) {
      QueueAddressed(run, instruction, word);
      QueueCapture(run);
      if (gap > 0) run.io.QueueDelay(gap);
    }
    if (!GoesOn(run, word)) return false;
  }
  return FetchAndHandOver(run, kBlockAndEndMark, 2 * words, 0, mode);
}

bool ReadEeprom(Run& run, std::int16_t mode) {
  ArmCapture(run);
  const std::int64_t bytes = EepromBytes(run);
  for (std::int64_t address = 0; address < bytes; ++address) {
    QueueAddressed(run, kReadEeprom, address);
    QueueCapture(run);
    if (!GoesOn(run, address)) return false;
  }
  return FetchAndHandOver(run, kBlockAndEndMark, bytes, 2 * FlashWords(run), mode);
}

bool WriteFlash(Run& run) {
  const std::int64_t page_words = std::max<std::int64_t>(run.vars.quorinpagelength[0], 1);
  const std::int64_t words = FlashWords(run);
  for (std::int64_t page = 0; page < words; page += page_words) {
    for (std::int64_t k = 0; k < page_words; ++k) {
      const std::int64_t word = page | k;
      for (const int half : {0, 1}) {
        QueueSend(run, half == 0 ? kLoadPageLow : kLoadPageHigh);
        QueueSend(run, 0x00);
        QueueSend(run, static_cast<std::uint8_t>(k));
        QueueSend(run, run.vars.quorinibuffer[2 * word + half]);
      }
      if (!GoesOn(run, word)) return false;
    }
    QueueAddressed(run, kWritePage, page);
    QueueSend(run, 0x00);
    run.io.QueueDelay(run.WriteTime(1));
  }
  return true;
}

bool WriteEeprom(Run& run, std::int32_t write_time) {
  const std::int64_t start = 2 * FlashWords(run);
  for (std::int64_t address = 0; address < EepromBytes(run); ++address) {
    QueueAddressed(run, kWriteEeprom, address);
    QueueSend(run, run.vars.quorinibuffer[start + address]);
    run.io.QueueDelay(run.WriteTime(write_time));
    if (!GoesOn(run, address)) return false;
  }
  return true;
}

}  // namespace

std::uint8_t& ConfigByte(Run& run, int below_end) {
  return run.vars.quorinibuffer[2 * std::int64_t{run.vars.quorintlength[0]} - below_end];
}

void WriteConfig(Run& run, std::span<const ConfigWrite> bytes) {
  for (const ConfigWrite& byte : bytes) {
    const auto value = static_cast<std::uint8_t>(ConfigByte(run, byte.below_end) | byte.forced);
    Send(run, {kControl, byte.instruction, 0x00, value});
    run.io.ShortDelay(run.WriteTime(1));
  }
}

void ReadConfig(Run& run, std::span<const ConfigRead> bytes) {
  for (const ConfigRead& byte : bytes) {
    Send(run, {byte.instruction.code, byte.instruction.high, byte.instruction.low});
    const std::uint8_t answer = Receive(run);
    ConfigByte(run, byte.below_end) = answer | byte.forced;
  }
}

void DataOp(Run& run, std::int16_t mode, const Family& family) {
  RequireReadable(run);
  OpenPass(run, kPassKind);
  if (ReadFlash(run, mode, family.flash_read_gap) && ReadEeprom(run, mode) &&
      mode == check_mode::kRead) {
    family.config(run, "output");
  }
  ClosePass(run);
}

void Program(Run& run, const Family& family, void (*data_op)(Run&, std::int16_t mode)) {
  RequireReadable(run);
  if (!WriteFlash(run)) return;
  run.io.FlushQueue();
  run.io.DelayMs(100);
  if (!WriteEeprom(run, family.eeprom_write_time)) return;
  run.io.FlushQueue();
  run.io.DelayMs(100);
  VerifyProgrammed(run, data_op);
}

void Erase(Run& run, void (*data_op)(Run&, std::int16_t mode)) {
  RequireReadable(run);
  Send(run, {kControl, kChipErase, 0x00, 0x00});
  run.io.ShortDelay(run.WriteTime(2));
  NoteBlankCheck(run);
  data_op(run, check_mode::kBlankCheck);
}

}  // namespace fliglaf::serial_page
