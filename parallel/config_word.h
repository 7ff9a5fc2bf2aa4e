#pragma once

#include <cstdint>

#include "usb/request/engine_run.h"

namespace fliglaf {

/// Tells in the log what has been read back of configuration word 0, from its low and high byte:
/// the word in hexadecimal and, of a device of programming mode 1, its settings.
void DescribeConfigWord(EngineRun& run, std::int16_t low, std::int16_t high);

}  // namespace fliglaf
