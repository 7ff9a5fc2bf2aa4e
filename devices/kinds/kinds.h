// The kinds of devices, each in a file of its name.
#pragma once

#include "devices/kinds/device_kind.h"

namespace fliglaf {

extern const DeviceKind kAvrJtag;
extern const DeviceKind kConfigWord;
extern const DeviceKind kFlashRegister;
extern const DeviceKind kFramedPage;
extern const DeviceKind kIsp51;
extern const DeviceKind kIsp51Data;
extern const DeviceKind kSerialPage;
extern const DeviceKind kSerialWord;
extern const DeviceKind kTwoWire;

}  // namespace fliglaf
