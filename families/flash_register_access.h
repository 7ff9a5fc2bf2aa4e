// What the passes of families 8 to 11 share: the flash registers, the image's layout, the reading
// of the lock bytes.
#pragma once

#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf::flash_register {

/// Values of the control register. A command of the second area has kSecondArea added in families
/// 10 and 11.
namespace control {
inline constexpr std::int32_t kReadBlock = 0x01;  ///< the address moves on, data are read ahead
inline constexpr std::int32_t kReadByte = 0x02;
inline constexpr std::int32_t kProgram = 0x10;
inline constexpr std::int32_t kErasePage = 0x20;
inline constexpr std::int32_t kSecondArea = 0x80;
}  // namespace control

/// Values of the timing register.
namespace scale {
inline constexpr std::int32_t kReadBlock = 0x06;
inline constexpr std::int32_t kSingle = 0x86;
}  // namespace scale

/// What an erase has the data register hold.
inline constexpr std::int32_t kEraseKey = 0xA5;

/// Address bits of families 8 and 9, whatever FlashRegs tells.
inline constexpr std::int16_t kNarrowAddress = 16;

void enterFlashAccess(Run& run);

/// Writes the low `width` bits of `value`: 8, 16 or 17. What lies above them goes out as well.
void writeFlashReg(Run& run, std::int32_t instruction, std::int32_t value, std::int16_t width);

/// Reads a register: with width 0 to begin with it, with 10 to capture its byte for the bulk read.
void readFlashReg(Run& run, std::int32_t instruction, std::int16_t width);

// The registers by what they do.
void WriteScale(Run& run, std::int32_t value);
void WriteAddress(Run& run, std::int64_t address, std::int16_t width);
void WriteControl(Run& run, std::int32_t value);
void WriteData(Run& run, std::int32_t value);
void StartRead(Run& run);
void CaptureByte(Run& run);

/// Sends what is queued and gives it 100 ms.
void FlushAndWait(Run& run);

/// Where things lie in the image, by the host's sizes. Two lock bytes and a page lie between the
/// main array and the second area.
struct Layout {
  /// Throws RangeError for an image that the data buffer cannot hold.
  explicit Layout(const Run& run);

  std::int64_t main_bytes;    ///< the main array begins at 0
  std::int64_t second_start;  ///< of the second area
  std::int64_t second_bytes;
  std::int64_t size;  ///< of the whole image
  std::int64_t page;  ///< one byte at least

  [[nodiscard]] std::int64_t lock_bytes() const { return main_bytes; }
  [[nodiscard]] std::int64_t last_page() const { return main_bytes + 2; }
};

/// Reads the two lock bytes into the image, or checks them, by `mode`.
void flashReadLock(Run& run, std::int16_t mode);

}  // namespace fliglaf::flash_register
