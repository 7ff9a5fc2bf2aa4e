#pragma once

#include "families/lines.h"
#include "usb/request/run.h"
#include "usb/request/socket_supply.h"

namespace fliglaf {

/// Opens the programmer, powers the socket and has the device's family enter programming mode.
/// Returns what SetFigMode did, unless no programmer was found.
[[nodiscard]] StartResult powerUpTarget(Run& run, WindowLines& lines);

}  // namespace fliglaf
