#pragma once

#include "usb/request/engine_run.h"

namespace fliglaf::parallel {

/// Writes the configuration word of the data buffer, or two when quorinbvcch(0) is 1, reads each
/// back and describes the first in the log.
void WriteConfigWord(EngineRun& run);

}  // namespace fliglaf::parallel
