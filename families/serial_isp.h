// Serial families over four lines: clock, data out, data in, reset.
#pragma once

#include <array>
#include <cstdint>

#include "usb/run.h"

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

}  // namespace fliglaf
