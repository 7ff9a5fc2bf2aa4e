#pragma once

#include <cstdint>

#include "usb/request/engine_run.h"

namespace fliglaf::parallel {

/// Runs operation `code`, with its notes. Outside the engine's one programming mode no device is
/// touched, but for code 11. The outcome is quorinprgresult(0).
void RunOperation(EngineRun& run, std::int16_t code);

}  // namespace fliglaf::parallel
