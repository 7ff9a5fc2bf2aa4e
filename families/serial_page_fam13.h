// Family 13: parts of the kind of serial_page.h with one fuse byte, or with two and calibration
// bytes, by the device's option.
#pragma once

#include <memory>

#include "families/family.h"

namespace fliglaf {

[[nodiscard]] std::unique_ptr<Family> MakeSerialPageFam13(Run& run, WindowLines& lines);

}  // namespace fliglaf
