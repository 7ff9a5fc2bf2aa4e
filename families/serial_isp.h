// Serial families over four lines: clock, data out, data in, reset.
#pragma once

#include <array>
#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf {

// Family 1: four-byte instructions, code memory read and written in pages of 256 bytes, byte
// address a at image byte a.

/// Read, verify, blank check or compare of addresses 0 to RangeEnd.
void ispFam1ReadPass(Run& run, std::int16_t mode);
/// Writes the pages from RangeStart to the end of the memory, then verifies.
void ispFam1Program(Run& run);
/// Writes lock levels 1 to `selector` + 1, each of which needs the one before it.
void ispWriteLockLevels(Run& run, std::uint8_t selector);
/// Chip erase, then a blank check.
void ispFam1Op11(Run& run);
/// The three signature bytes: manufacturer code, device code, and the one after it.
[[nodiscard]] std::array<std::uint8_t, 3> ispFam1Signature(Run& run);

// Family 2: three-byte instructions, code memory and data EEPROM byte by byte; in the image the
// EEPROM is the last quorinbvcch(0) bytes.

/// Read, verify, blank check or compare of what RangeStart to RangeEnd cover of both memories.
void ispFam2ReadPass(Run& run, std::int16_t mode);
/// Writes what RangeStart to RangeEnd cover of both memories, then verifies.
void ispFam2Program(Run& run);
/// Writes the lock bits: `bits` 4, 2 and 1 are lock bits 1, 2 and 3, and 0 locks.
void ispFam2Lock(Run& run, std::uint8_t bits);
/// Chip erase, then a blank check.
void ispFam2Op11(Run& run);

// Family 3: four-byte instructions, words of two bytes and a small EEPROM; word w at image bytes 2w
// (low) and 2w + 1 (high). Reading puts the EEPROM behind the program memory, programming takes it
// from image byte 0x400: the same place for 512 words, the most there are.

/// Read, verify, blank check or compare of both memories, whatever the range.
void ispFam3ReadPass(Run& run, std::int16_t mode);
/// Writes the bytes of both memories that are not 0xFF, of the EEPROM from RangeStart on; then
/// verifies.
void ispFam3Program(Run& run);
/// Writes the lock bits: `bits` 1 and 2 are lock bits 1 and 2, and 0 locks.
void ispWriteLockBits(Run& run, std::int32_t bits);
/// Chip erase, a reset pulse and the programming enable anew, then a blank check.
void ispFam3Op10(Run& run);

}  // namespace fliglaf
