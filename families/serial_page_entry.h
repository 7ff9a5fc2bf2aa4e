// How the serial families with page-wise flash enter programming mode.
#pragma once

#include "usb/request/run.h"

namespace fliglaf {

/// Families 13 and 14: a positive reset pulse and the programming enable, until the device echoes
/// its second byte, at most Retries() times and once at least. A device that never does is
/// left to the operation to find.
void enterSerialPage(Run& run);

}  // namespace fliglaf
