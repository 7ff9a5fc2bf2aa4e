// The steps that read-type passes of the USB families share: captures are queued, fetched in
// blocks, and handed over byte by byte.
#pragma once

#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf {

/// Most bytes that one captured block holds.
inline constexpr std::int32_t kBlockBytes = 16384;
/// Asked for where a block is fetched with one count whatever its size.
inline constexpr std::int32_t kBlockAndEndMark = kBlockBytes + 1;

/// Packets around a pass. `kind` is the second byte of the opening packet; ClosePass waits for what
/// is queued first.
void OpenPass(Run& run, std::uint8_t kind);
void ClosePass(Run& run);
void SendClosingPacket(Run& run);

/// ProgressAt; false after a stop.
[[nodiscard]] bool GoesOn(Run& run, std::int64_t address);

/// Starts a capture: what is captured from here on is what the bulk read after the next ArmCapture
/// brings.
void ArmCapture(Run& run);

/// What to ask for when `bytes` captured bytes are fetched in whole packets with the end mark
/// behind them.
[[nodiscard]] constexpr std::int32_t WholePackets(std::int64_t bytes) {
  return static_cast<std::int32_t>((bytes + 64) / 64 * 64 + 1);
}

/// Sends what is queued, waits `wait_ms` milliseconds, and fetches the captured bytes into
/// quorinibuf2: `count` bytes, the end mark included. False when the bulk read failed or was
/// stopped.
[[nodiscard]] bool FetchCaptures(Run& run, std::int32_t count, std::int32_t wait_ms = 100);

/// FetchCaptures for a pass that goes on with whatever quorinibuf2 holds; false only after a stop.
/// A block that could not be fetched is counted in quorinubuflg(1), so that a host can tell a
/// result that rests on it.
[[nodiscard]] bool FetchOrCountAsLost(Run& run, std::int32_t count, std::int32_t wait_ms = 100);

/// How the captured bytes of a family come: the programmer takes the first bit for bit 7.
enum class BitOrder : std::uint8_t { kHighFirst, kLowFirst };

/// Hands bytes 0 to `last` of quorinibuf2 over, the first at image address `image`. False when the
/// programmer ended the pass.
[[nodiscard]] bool HandOver(Run& run, std::int32_t last, std::int32_t image, std::int16_t mode,
                            BitOrder order = BitOrder::kHighFirst);

/// Fetches a block of `bytes` captured bytes and hands it over, the first at image address `image`.
/// A block that is lost, as FetchOrCountAsLost has it, is handed over all the same. False when the
/// pass is over.
[[nodiscard]] bool FetchAndHandOver(Run& run, std::int32_t count, std::int64_t bytes,
                                    std::int64_t image, std::int16_t mode,
                                    BitOrder order = BitOrder::kHighFirst);

/// Throws std::length_error for a memory beyond kBlockBytes, in a family that reads it in one
/// block: what lies beyond would never be read.
void RequireOneBlock(std::int64_t bytes);

/// Verifies what has just been programmed: one read pass at nominal supply, or one at the raised
/// and, if that was good, one at the lowered supply.
void VerifyProgrammed(Run& run, void (*read_pass)(Run&, std::int16_t mode));

/// Closes the programming of a family that verifies after a new start: takes the device from its
/// supply, powers it up again and verifies.
void VerifyPoweredAnew(Run& run, void (*read_pass)(Run&, std::int16_t mode));

}  // namespace fliglaf
