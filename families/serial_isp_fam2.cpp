#include <algorithm>

#include "families/read_pass.h"
#include "families/serial_isp.h"
#include "families/serial_lines.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

using namespace serial;

/// First byte of an instruction: the code, and in the bits of the mask the address from bit 8 on.
struct Opcode {
  std::uint8_t mask;
  std::uint8_t code;

  [[nodiscard]] std::uint8_t At(std::int64_t address) const {
    return static_cast<std::uint8_t>(((address >> 8) * 8 & mask) | code);
  }
};
constexpr Opcode kReadCode{0xFE, 0x01};
constexpr Opcode kWriteCode{0xFD, 0x02};
constexpr Opcode kReadData{0x3A, 0x05};
constexpr Opcode kWriteData{0x39, 0x06};

constexpr std::uint8_t kPassKind = 0x10;
constexpr std::int64_t kFlushBytes = 1024;

/// The part of one memory that the operation covers, in image addresses; nothing of it when last
/// is below first.
struct Area {
  std::int64_t first;
  std::int64_t last;
  std::int64_t memory_start;  ///< image address of the memory's own address 0
  Opcode read;
  Opcode write;
};

/// The image holds the code memory, then the data EEPROM.
std::int64_t DataStart(const Run& run) {
  return std::int64_t{run.vars.quorintlength[0]} - run.vars.quorinbvcch[0];
}

Area CodeArea(const Run& run) {
  return {.first = run.RangeStart,
          .last = std::min<std::int64_t>(run.RangeEnd, DataStart(run) - 1),
          .memory_start = 0,
          .read = kReadCode,
          .write = kWriteCode};
}

Area DataArea(const Run& run) {
  const std::int64_t start = DataStart(run);
  return {.first = std::max<std::int64_t>(run.RangeStart, start),
          .last = std::min<std::int64_t>(run.RangeEnd, run.vars.quorintlength[0] - 1LL),
          .memory_start = start,
          .read = kReadData,
          .write = kWriteData};
}

void QueueReads(Run& run, const Area& area, std::int64_t first, std::int64_t last) {
  for (std::int64_t image = first; image <= last; ++image) {
    const std::int64_t address = image - area.memory_start;
    QueueSend(run, area.read.At(address));
    QueueSend(run, static_cast<std::uint8_t>(address & 0xFF));
    QueueCapture(run);
  }
}

/// False when the pass is over.
bool ReadArea(Run& run, const Area& area, std::int16_t mode) {
  RequireData(run, area.first, area.last);
  for (std::int64_t first = area.first; first <= area.last; first += kBlockBytes) {
    const std::int64_t last = std::min(area.last, first + kBlockBytes - 1);
    ArmCapture(run);
    QueueReads(run, area, first, last);
    if (!FetchAndHandOver(run, kBlockAndEndMark, last - first + 1, first, mode)) return false;
  }
  return true;
}

void FlushWrites(Run& run) {
  run.io.FlushQueue();
  run.io.DelayMs(10);
}

/// Leaves up to a kilobyte queued.
void WriteArea(Run& run, const Area& area) {
  RequireData(run, area.first, area.last);
  for (std::int64_t image = area.first; image <= area.last; ++image) {
    const std::int64_t address = image - area.memory_start;
    QueueSend(run, area.write.At(address));
    QueueSend(run, static_cast<std::uint8_t>(address & 0xFF));
    QueueSend(run, run.vars.quorinibuffer[image]);
    run.io.QueueDelay(run.WriteTime(1));
    if ((image - area.first + 1) % kFlushBytes == 0) {
      ProgressAt(run, image);
      FlushWrites(run);
    }
  }
}

}  // namespace

void ispFam2ReadPass(Run& run, std::int16_t mode) {
  OpenPass(run, kPassKind);
  for (const Area& area : {CodeArea(run), DataArea(run)}) {
    if (!ReadArea(run, area, mode)) break;
  }
  ClosePass(run);
}

void ispFam2Program(Run& run) {
  WriteArea(run, CodeArea(run));
  WriteArea(run, DataArea(run));
  FlushWrites(run);
  VerifyProgrammed(run, ispFam2ReadPass);
}

void ispFam2Lock(Run& run, std::uint8_t bits) {
  Send(run, {0xAC, static_cast<std::uint8_t>((bits * 0x20 & 0xE0) | 0x1F), 0xFF});
}

void ispFam2Op11(Run& run) {
  Send(run, {0xAC, 0xFC, 0xFF});
  run.io.ShortDelay(run.WriteTime(10));
  NoteBlankCheck(run);
  ispFam2ReadPass(run, check_mode::kBlankCheck);
}

}  // namespace fliglaf
