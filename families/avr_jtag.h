// Families 4 to 7: microcontrollers with the AVR JTAG programming interface. Family 4 is variant A,
// whose flash page is loaded and read through a register of one byte; families 5 to 7 are variant
// B, whose page passes through one long register.
#pragma once

#include <array>
#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf {

/// Enters programming mode: the family's entry at power-up.
void enterAvrJtag(Run& run);

// Read-type passes over flash, EEPROM and, when reading, the configuration; `mode` is a check_mode.
void jtagAReadPass(Run& run, std::int16_t mode);
void jtagBReadPass(Run& run, std::int16_t mode);

// Flash and EEPROM written, then verified.
void jtagAProgram(Run& run);
void jtagBProgram(Run& run);

// Chip erase, then a blank check.
void jtagAErase(Run& run);
void jtagBErase(Run& run);

/// Fuse and lock bytes written from the image. JTAGEN, bit 6 of the high fuse byte, is always
/// programmed: a device without it could not be reached again.
void jtagWriteConfig(Run& run);

[[nodiscard]] std::array<std::uint8_t, 3> avrJtagSignature(Run& run);

}  // namespace fliglaf
