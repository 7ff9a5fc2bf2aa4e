// Family 1: microcontrollers with one code memory and three lock levels, programmed over four lines
// with four-byte instructions, in pages of 256 bytes. The numbers are those of the data sheets of
// such parts.
#pragma once

#include <memory>

#include "families/family.h"

namespace fliglaf {

[[nodiscard]] std::unique_ptr<Family> MakeIspFam1(Run& run, WindowLines& lines);

}  // namespace fliglaf
