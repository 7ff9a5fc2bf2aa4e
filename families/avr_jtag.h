// Families 4 to 7: microcontrollers with the AVR JTAG programming interface, on a test access port
// of IEEE 1149.1. The numbers are those of the data sheets of such parts.
#pragma once

#include <memory>

#include "families/family.h"

namespace fliglaf {

/// Family 4, variant A: the flash page is loaded and read through a register of one byte.
[[nodiscard]] std::unique_ptr<Family> MakeAvrJtagA(Run& run, WindowLines& lines);
/// Families 5 to 7, variant B: the flash page passes through one long register.
[[nodiscard]] std::unique_ptr<Family> MakeAvrJtagB(Run& run, WindowLines& lines);

}  // namespace fliglaf
