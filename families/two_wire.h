// Families 12 and 16: microcontrollers with a flash programming interface on a clock and a data
// line. The two differ in their power-up and their reset pulse alone.
#pragma once

#include <array>
#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf {

// Load the lines of the device's variant: the families' entries at power-up.
void enterTwoWire12(Run& run);
void enterTwoWire16(Run& run);

/// Device and revision number of family 12, behind a byte that stays 0.
[[nodiscard]] std::array<std::uint8_t, 3> fam12Signature(Run& run);

/// Read-type pass over the main array and, when reading, the lock byte, which is the array's last;
/// `mode` is a check_mode.
void dataOp12(Run& run, std::int16_t mode);

/// The main array up to the lock byte written in chunks of half a page, then verified.
void program12(Run& run);

/// Device erase, then a blank check, which decides the result.
void erase12(Run& run);

/// The lock byte written from the image.
void writeLock12(Run& run);

}  // namespace fliglaf
