// Family 2: microcontrollers with code memory, data EEPROM and three lock bits, programmed over
// four lines byte by byte with three-byte instructions. They have no signature in programming mode.
// The numbers are those of the data sheets of such parts.
#pragma once

#include <memory>

#include "families/family.h"

namespace fliglaf {

[[nodiscard]] std::unique_ptr<Family> MakeIspFam2(Run& run, WindowLines& lines);

}  // namespace fliglaf
