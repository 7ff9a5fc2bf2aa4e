#include <algorithm>
#include <cmath>

#include "families/read_pass.h"
#include "families/serial_isp.h"
#include "families/serial_lines.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using namespace serial;

constexpr std::uint8_t kReadLow = 0x20;
constexpr std::uint8_t kReadHigh = 0x28;
constexpr std::uint8_t kWriteLow = 0x40;
constexpr std::uint8_t kWriteHigh = 0x48;
constexpr std::uint8_t kReadEeprom = 0xA0;
constexpr std::uint8_t kWriteEeprom = 0xC0;

constexpr std::uint8_t kReadPassKind = 0x0A;
constexpr std::uint8_t kProgramPassKind = 0x10;

constexpr std::int32_t kReadGap = 100;  ///< µs after a byte of a word
constexpr std::uint8_t kErased = 0xFF;

/// Words of the image that belong to no memory.
constexpr std::int64_t kSpareWords = 16;
/// Where programming finds the EEPROM bytes in the image: behind the largest program memory.
constexpr std::int64_t kEepromImage = 0x400;

std::int64_t EepromBytes(const Run& run) { return run.vars.quorinbvcch[0]; }

/// Words of the program memory. Two EEPROM bytes take the place of a word in the image; half a word
/// goes to the even neighbour. Throws std::length_error for more than one block can bring back.
std::int64_t ProgramWords(const Run& run) {
  const auto eeprom_words =
      static_cast<std::int64_t>(std::nearbyint(static_cast<double>(EepromBytes(run)) / 2));
  const std::int64_t words = run.vars.quorintlength[0] - kSpareWords - eeprom_words;
  RequireOneBlock(2 * words);
  return std::max<std::int64_t>(words, 0);
}

void QueueWordAddress(Run& run, std::int64_t word) {
  QueueSend(run, static_cast<std::uint8_t>(word >> 8 & 1));
  QueueSend(run, static_cast<std::uint8_t>(word & 0xFF));
}

void QueueEepromAddress(Run& run, std::int64_t address) {
  QueueSend(run, 0x00);
  QueueSend(run, static_cast<std::uint8_t>(address & 0x3F));
}

/// False when the pass is over.
bool ReadWords(Run& run, std::int64_t words, std::int16_t mode) {
  if (words == 0) return true;
  ArmCapture(run);
  for (std::int64_t word = 0; word < words; ++word) {
    for (const std::uint8_t instruction : {kReadLow, kReadHigh}) {
      QueueSend(run, instruction);
      QueueWordAddress(run, word);
      QueueCapture(run);
      run.io.QueueDelay(kReadGap);
    }
  }
  return FetchAndHandOver(run, WholePackets(2 * words), 2 * words, 0, mode);
}

/// The last block of a pass: whether it ended the pass makes no difference.
void ReadEeprom(Run& run, std::int64_t image, std::int16_t mode) {
  const std::int64_t bytes = EepromBytes(run);
  if (bytes <= 0) return;
  ArmCapture(run);
  for (std::int64_t address = 0; address < bytes; ++address) {
    QueueSend(run, kReadEeprom);
    QueueEepromAddress(run, address);
    QueueCapture(run);
  }
  static_cast<void>(FetchAndHandOver(run, WholePackets(bytes), bytes, image, mode));
}

/// The memory is erased when it is programmed: a byte of 0xFF is there already.
void WriteWords(Run& run, std::int64_t words) {
  for (std::int64_t word = 0; word < words; ++word) {
    for (const std::uint8_t instruction : {kWriteLow, kWriteHigh}) {
      const std::uint8_t byte = run.vars.quorinibuffer[2 * word + (instruction == kWriteHigh)];
      if (byte == kErased) continue;
      QueueSend(run, instruction);
      QueueWordAddress(run, word);
      QueueSend(run, byte);
      run.io.QueueDelay(run.WriteTime(1));
    }
    ProgressAt(run, word);
  }
}

void WriteEeprom(Run& run) {
  for (std::int64_t address = run.RangeStart; address < EepromBytes(run); ++address) {
    const std::uint8_t byte = run.vars.quorinibuffer[kEepromImage + address];
    if (byte == kErased) continue;
    QueueSend(run, kWriteEeprom);
    QueueEepromAddress(run, address);
    QueueSend(run, byte);
    run.io.QueueDelay(run.WriteTime(1));
  }
}

}  // namespace

void ispFam3ReadPass(Run& run, std::int16_t mode) {
  const std::int64_t words = ProgramWords(run);
  OpenPass(run, kReadPassKind);
  if (ReadWords(run, words, mode)) ReadEeprom(run, 2 * words, mode);
  ClosePass(run);
}

void ispFam3Program(Run& run) {
  const std::int64_t words = ProgramWords(run);
  OpenPass(run, kProgramPassKind);
  WriteWords(run, words);
  WriteEeprom(run);
  run.io.FlushQueue();
  VerifyPoweredAnew(run, ispFam3ReadPass);
}

void ispWriteLockBits(Run& run, std::int32_t bits) {
  Send(run, {0xAC, static_cast<std::uint8_t>((std::int64_t{bits} * 2) | 0xF9), 0x00, 0x00});
}

void ispFam3Op10(Run& run) {
  Send(run, {0xAC, 0x9F, 0x00, 0x00});
  run.io.ShortDelay(run.WriteTime(10));
  run.io.WriteLatch(kResetHigh, kResetLatch);
  run.io.WriteLatch(kResetLow, kResetLatch);
  run.io.ShortDelay(run.WriteTime(2));
  NoteBlankCheck(run);
  Send(run, {0xAC, 0x53, 0x00, 0x00});
  ispFam3ReadPass(run, check_mode::kBlankCheck);
}

}  // namespace fliglaf
