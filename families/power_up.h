#pragma once

#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf {

/// Opens the programmer, powers the socket and brings the device into its programming mode. Returns
/// kNoProgrammer or kAdapterAbort when that stops at the start, else the result of SetFigMode; a
/// result of 1 from there is a failed start too, but the target has been powered.
[[nodiscard]] std::int32_t powerUpTarget(Run& run);

}  // namespace fliglaf
