// Serial families whose flash is written page by page: 13 and 14 with words of two bytes, EEPROM,
// fuses and lock bits.
#pragma once

#include <cstdint>
#include <string_view>

#include "usb/request/run.h"

namespace fliglaf {

// Families 13 and 14. The image: flash word w at bytes 2w and 2w + 1, the EEPROM after the flash,
// the configuration bytes in the last 32 bytes of the memory size. A memory beyond the 16,384 bytes
// that its one transfer brings throws std::length_error.

/// Read, verify, blank check or compare of flash and EEPROM; a read takes the configuration too.
void dataOp13(Run& run, std::int16_t mode);
void dataOp14(Run& run, std::int16_t mode);
/// Writes flash and EEPROM, then verifies. A stop leaves at once.
void program13(Run& run);
void program14(Run& run);
/// Chip erase, then a blank check.
void erase13(Run& run);
void erase14(Run& run);
/// "input" writes the configuration bytes of the image, "output" reads them into it, anything else
/// does nothing.
void config13(Run& run, std::string_view direction);
void config14(Run& run, std::string_view direction);

}  // namespace fliglaf
