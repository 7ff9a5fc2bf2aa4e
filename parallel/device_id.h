#pragma once

#include "usb/request/signature_check.h"

namespace fliglaf::parallel {

/// Compares the device's signature with quorincompid(0) and quorintypeid(0). No answer from a
/// device whose manufacturer is not known is accepted.
[[nodiscard]] SignatureOutcome CheckDeviceId(EngineRun& run);

}  // namespace fliglaf::parallel
