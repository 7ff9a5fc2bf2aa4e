// The flash of families 8 to 11 as their debug port gives it: four registers, each selected by an
// instruction of 16 bits. The numbers are those of the data sheets of such parts.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "families/hardware_tap.h"
#include "families/lines.h"
#include "usb/request/run.h"

namespace fliglaf {

class FlashRegisterAccess {
 public:
  /// Values of the control register.
  enum class Command : std::uint8_t {
    kReadBlock = 0x01,  ///< the address moves on, data are read ahead
    kReadByte = 0x02,
    kProgram = 0x10,
    kErasePage = 0x20,
  };
  /// Added to a command: where its address lies. Only families 10 and 11 have a second space.
  enum class Area : std::uint8_t { kMain = 0x00, kSecond = 0x80 };
  /// Values of the timing register.
  enum class Scale : std::uint8_t { kBlock = 0x06, kSingle = 0x86 };

  FlashRegisterAccess(Run& run, WindowLines& lines)
      : run_(run), lines_(lines), regs_(lines.flash), tap_(run, lines.jtag) {}

  /// Loads lines and registers by the device's option, and opens the flash. An option without a row
  /// leaves the lines as they are.
  void Enter();
  [[nodiscard]] std::int32_t ReadIdentification();

  void resetTap() { tap_.resetTap(); }
  void enterFlashAccess();
  void Restart() {
    resetTap();
    enterFlashAccess();
  }

  // The registers by what they do.
  void WriteScale(Scale scale) { WriteByte(regs_.regScale, static_cast<std::int32_t>(scale)); }
  void WriteAddress(std::int64_t address, std::int16_t width) {
    writeFlashReg(regs_.regAddress, static_cast<std::int32_t>(address), width);
  }
  void WriteControl(Command command, Area area = Area::kMain) {
    WriteByte(regs_.regControl,
              static_cast<std::int32_t>(command) | static_cast<std::int32_t>(area));
  }
  void WriteData(std::int32_t byte) { WriteByte(regs_.regData, byte); }
  // A read is started, then captured; the byte comes with the next bulk read.
  void StartRead() { readFlashReg(regs_.regData, kStartWidth); }
  void CaptureByte() { readFlashReg(regs_.regData, kCaptureWidth); }

  /// Bits of an address by the register set that was loaded.
  [[nodiscard]] std::int16_t address_width() const { return regs_.addressWidth; }

  /// Sends what is queued and gives it 100 ms.
  void FlushAndWait();

 private:
  void LoadAssignment();
  void OpenFlash();
  void Select(std::initializer_list<std::int32_t> instructions);

  /// Writes the low `width` bits of `value`: 8, 16 or 17. What lies above them goes out as well.
  void writeFlashReg(std::int32_t instruction, std::int32_t value, std::int16_t width);
  void WriteByte(std::int32_t instruction, std::int32_t value) {
    writeFlashReg(instruction, value, 8);
  }
  /// Reads a register, with one of two widths.
  static constexpr std::int16_t kStartWidth = 0;
  static constexpr std::int16_t kCaptureWidth = 10;
  void readFlashReg(std::int32_t instruction, std::int16_t width);

  Run& run_;
  WindowLines& lines_;
  const FlashRegs& regs_;
  HardwareTap tap_;
};

}  // namespace fliglaf
