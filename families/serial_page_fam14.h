// Family 14: parts of the kind of serial_page.h with three fuse bytes.
#pragma once

#include <memory>

#include "families/family.h"

namespace fliglaf {

[[nodiscard]] std::unique_ptr<Family> MakeSerialPageFam14(Run& run, WindowLines& lines);

}  // namespace fliglaf
