#pragma once

#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf {

/// Where a bulk read puts its bytes. Every number but the two named first reads `count` bytes into
/// quorinibuf2.
namespace bulk_mode {
inline constexpr std::int16_t kDataBuffer = 0;    ///< quorinibuffer from `start` on
inline constexpr std::int16_t kSinglePacket = 5;  ///< quorinibuf2, always 65 bytes
inline constexpr std::int16_t kCaptures = 1;      ///< quorinibuf2
}  // namespace bulk_mode

/// Reads `count` bytes from the programmer and waits until the last of them is the end mark, at
/// most 5 s. Returns 0 when the data are complete, 1 when the transfer failed, timed out or was
/// stopped; quorinprgresult(0) is then 2 after a stop, 0 otherwise.
[[nodiscard]] std::int16_t BulkRead(Run& run, std::int16_t mode, std::int32_t start,
                                    std::int32_t count);

}  // namespace fliglaf
