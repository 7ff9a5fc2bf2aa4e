#pragma once

#include <cstdint>

#include "usb/request/engine_run.h"

namespace fliglaf::parallel {

/// Compares the device's signature with quorincompid(0) and quorintypeid(0). Returns 0 to go on (a
/// match, nothing to check, no answer from a device whose manufacturer is not known, or the user
/// ignored a mismatch), 1 when the user aborted; the run has then been ended.
[[nodiscard]] std::int16_t CheckDeviceId(EngineRun& run);

}  // namespace fliglaf::parallel
