#pragma once

#include <cstdint>

#include "usb/request/engine_run.h"

namespace fliglaf::parallel {

/// Takes the socket through the supplies, lines and waits that put a device into the bit-serial
/// programming mode, by the pins of its package, quorinchippin(0), with variants by the programming
/// mode, quorinbvcch(0) and quorinwoption(1) and (2). The last steps, which the programming voltage
/// comes with, are taken when `stage` is 1 only. A package without a row is left alone.
void EnterConfigMode(EngineRun& run, std::uint8_t stage);

}  // namespace fliglaf::parallel
