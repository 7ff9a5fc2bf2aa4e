// How the serial families enter programming mode.
#pragma once

#include "usb/request/run.h"

namespace fliglaf {

/// Family 1: reset pulses and the programming enable, at most 25 times, until the device answers.
/// A device that never answers is left to the operation to find.
void enterIspFam1(Run& run);

/// Family 2: the programming enable after the rise of reset; nothing answers.
void enterIspFam2(Run& run);

/// Family 3: the programming enable while reset is held low; nothing answers.
void enterIspFam3(Run& run);

}  // namespace fliglaf
