#pragma once

#include "usb/request/signature_check.h"

namespace fliglaf::parallel {

/// Compares the device's signature with quorincompid(0) and quorintypeid(0). A device that
/// does not answer passes when the host gives no manufacturer code.
[[nodiscard]] SignatureOutcome CheckDeviceId(EngineRun& run);

}  // namespace fliglaf::parallel
