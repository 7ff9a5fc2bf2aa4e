#include "families/isp_fam2.h"

#include <algorithm>

#include "families/serial_lines.h"
#include "usb/request/notes.h"

namespace fliglaf {
namespace {

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

constexpr std::uint8_t kChipErase = 0xFC;
constexpr std::uint8_t kWriteLock = 0x1F;  ///< the lock bits are the three above it
constexpr std::uint8_t kAnyData = 0xFF;    ///< in place of a byte that the device ignores

/// Bytes after which what is queued is sent.
constexpr std::int64_t kFlushBytes = 1024;

// Pauses, in units of the write time.
constexpr std::int32_t kByteWrite = 1;
constexpr std::int32_t kErase = 10;

/// The part of one memory that the operation covers, in image addresses; nothing of it when last
/// is below first.
struct Area {
  std::int64_t first;
  std::int64_t last;
  std::int64_t memory_start;  ///< image address of the memory's own address 0
  Opcode read;
  Opcode write;
};

class IspFam2 : public Family {
 public:
  explicit IspFam2(Run& request)
      : Family(request), lines_(request), image_(LayoutOf(2, SizesOf(request.vars))) {}

  /// Nothing answers the programming enable, and the programmer needs no mode packet.
  void Enter() override {
    lines_.SetUp(ResetLevel::kHigh);
    io.DelayMs(100);
    lines_.SetReset(ResetLevel::kLow);
    lines_.ConfigureShifter(ShifterLength::kShort);
    lines_.SetReset(ResetLevel::kHigh);
    lines_.SendControl({SerialLines::kEnable, kAnyData});
  }
  void ReadPass(CheckMode mode) override { ispFam2ReadPass(mode); }
  void Program() override { ispFam2Program(); }
  void Code8() override { ispFam2Lock(3); }
  void Code9() override { ispFam2Lock(1); }
  void Code10() override { ispFam2Lock(0); }
  void Code11() override { ispFam2Op11(); }
  bool HasSignature() const override { return false; }

 private:
  void ispFam2ReadPass(CheckMode mode) {
    OpenPass(PassKind::kBytes);
    for (const Area& area : {CodeArea(), DataArea()}) {
      if (!ReadArea(area, mode)) break;
    }
    ClosePass();
  }

  void ispFam2Program() {
    WriteArea(CodeArea());
    WriteArea(DataArea());
    FlushWrites();
    VerifyProgrammed();
  }

  /// Writes the lock bits: `bits` 4, 2 and 1 are lock bits 1, 2 and 3, and 0 locks.
  void ispFam2Lock(std::uint8_t bits) {
    lines_.SendControl({static_cast<std::uint8_t>((bits * 0x20 & 0xE0) | kWriteLock), kAnyData});
  }

  void ispFam2Op11() {
    lines_.SendControl({kChipErase, kAnyData});
    io.ShortDelay(run.WriteTime(kErase));
    NoteBlankCheck(run);
    ispFam2ReadPass(CheckMode::kBlankCheck);
  }

  [[nodiscard]] Area CodeArea() const {
    return {.first = run.RangeStart,
            .last = std::min<std::int64_t>(run.RangeEnd, image_.main_bytes - 1),
            .memory_start = 0,
            .read = kReadCode,
            .write = kWriteCode};
  }

  [[nodiscard]] Area DataArea() const {
    const std::int64_t start = image_.data_start;
    return {.first = std::max<std::int64_t>(run.RangeStart, start),
            .last = std::min<std::int64_t>(run.RangeEnd, start + image_.data_bytes - 1),
            .memory_start = start,
            .read = kReadData,
            .write = kWriteData};
  }

  void QueueInstruction(Opcode opcode, std::int64_t address) {
    lines_.QueueSend(opcode.At(address), static_cast<std::uint8_t>(address & 0xFF));
  }

  /// False when the pass is over.
  bool ReadArea(const Area& area, CheckMode mode) {
    RequireData(run, area.first, area.last);
    for (std::int64_t first = area.first; first <= area.last; first += kBlockBytes) {
      const std::int64_t last = std::min(area.last, first + kBlockBytes - 1);
      ArmCapture();
      for (std::int64_t image = first; image <= last; ++image) {
        QueueInstruction(area.read, image - area.memory_start);
        lines_.QueueCapture();
      }
      if (!FetchAndJudge({.bytes = last - first + 1, .image = first}, mode)) return false;
    }
    return true;
  }

  /// Leaves up to a kilobyte queued.
  void WriteArea(const Area& area) {
    RequireData(run, area.first, area.last);
    for (std::int64_t image = area.first; image <= area.last; ++image) {
      QueueInstruction(area.write, image - area.memory_start);
      lines_.QueueSend(vars.quorinibuffer[image]);
      io.QueueDelay(run.WriteTime(kByteWrite));
      if ((image - area.first + 1) % kFlushBytes == 0) {
        ProgressAt(image);
        FlushWrites();
      }
    }
  }

  void FlushWrites() {
    io.FlushQueue();
    io.DelayMs(10);
  }

  SerialLines lines_;
  const ImageLayout image_;
};

}  // namespace

std::unique_ptr<Family> MakeIspFam2(Run& run, WindowLines& /*lines*/) {
  return std::make_unique<IspFam2>(run);
}

}  // namespace fliglaf
