#pragma once

#include <cstdint>

#include "families/lines.h"
#include "usb/request/run.h"

namespace fliglaf {

/// Runs operation `code` for the device family quorinprgmode(0): result and progress reset, start
/// line, the family's routine, result line. The outcome is quorinprgresult(0).
void RunOperation(Run& run, WindowLines& lines, std::int16_t code);

}  // namespace fliglaf
