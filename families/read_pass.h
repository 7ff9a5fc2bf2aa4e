// The steps that read-type passes of the USB families share: captures are queued, fetched in
// blocks, and handed over byte by byte.
#pragma once

#include <cstdint>

#include "usb/run.h"

namespace fliglaf {

/// Most bytes that one captured block holds.
inline constexpr std::int32_t kBlockBytes = 16384;

/// Packets around a pass. `kind` is the second byte of the opening packet.
void OpenPass(Run& run, std::uint8_t kind);
void ClosePass(Run& run);

/// Starts a capture: what is captured from here on is what the bulk read after the next ArmCapture
/// brings.
void ArmCapture(Run& run);

/// Sends what is queued, waits, and fetches the captured bytes into quorinibuf2: `count` bytes, the
/// end mark included. False when the bulk read failed or was stopped.
[[nodiscard]] bool FetchCaptures(Run& run, std::int32_t count);

/// Hands bytes 0 to `last` of quorinibuf2 over, the first at image address `image`. False when the
/// programmer ended the pass.
[[nodiscard]] bool HandOver(Run& run, std::int32_t last, std::int32_t image, std::int16_t mode);

/// Verifies what has just been programmed: one read pass at nominal supply, or one at the raised
/// and, if that was good, one at the lowered supply.
void VerifyProgrammed(Run& run, void (*read_pass)(Run&, std::int16_t mode));

}  // namespace fliglaf
