// Families 8 to 11: microcontrollers whose flash is reached through JTAG and four indirect flash
// registers. Families 8 and 9 have their second memory area behind the main array, in one address
// space of 64 KiB; families 10 and 11 have it in a space of its own.
#pragma once

#include <array>
#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf {

/// Loads the lines and registers of the device's variant and opens its flash interface: the
/// family's entry at power-up.
void enterFlashRegister(Run& run);

/// Manufacturer and part of the identification code, version.
[[nodiscard]] std::array<std::uint8_t, 3> flashRegisterSignature(Run& run);

// Read-type passes over the main array, the second area and, when reading, the two lock bytes;
// `mode` is a check_mode.
void flashDataOp8(Run& run, std::int16_t mode);
void flashDataOp9(Run& run, std::int16_t mode);
void flashDataOp10(Run& run, std::int16_t mode);

// Main array and second area written byte by byte, then verified. Family 9 writes the page between
// them, too.
void flashProgram8(Run& run);
void flashProgram9(Run& run);
void flashProgram10(Run& run);

// Erase page by page from the last one down, then a blank check.
void flashErase8(Run& run);
void flashErase9(Run& run);
void flashErase10(Run& run);

/// The two lock bytes written from the image.
void flashWriteLock(Run& run);

}  // namespace fliglaf
