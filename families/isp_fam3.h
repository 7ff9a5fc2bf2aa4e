// Family 3: microcontrollers with up to 512 words of flash, a small EEPROM and two lock bits,
// programmed over four lines byte by byte with four-byte instructions. The numbers are those of the
// data sheets of such parts.
#pragma once

#include <memory>

#include "families/family.h"

namespace fliglaf {

[[nodiscard]] std::unique_ptr<Family> MakeIspFam3(Run& run, WindowLines& lines);

}  // namespace fliglaf
