// Family 15: microcontrollers with a code memory written in pages, fuse and lock bits, programmed
// over the four serial lines and a select line that frames each instruction. The numbers are those
// of the data sheets of such parts.
#pragma once

#include <memory>

#include "families/family.h"

namespace fliglaf {

[[nodiscard]] std::unique_ptr<Family> MakeFramedPage(Run& run, WindowLines& lines);

}  // namespace fliglaf
