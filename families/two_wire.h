// Families 12 and 16: microcontrollers with a flash programming interface on a clock and a data
// line. The numbers are those of data sheets of such parts.
#pragma once

#include <memory>

#include "families/family.h"
#include "families/lines.h"

namespace fliglaf {

[[nodiscard]] std::unique_ptr<Family> MakeTwoWire12(Run& run, WindowLines& lines);
/// Differs from family 12 in its power-up and its reset pulse; its signature is not read.
[[nodiscard]] std::unique_ptr<Family> MakeTwoWire16(Run& run, WindowLines& lines);

}  // namespace fliglaf
