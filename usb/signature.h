#pragma once

#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf {

/// Reads the signature of the device in the socket and compares it with quorincompid(0) and
/// quorintypeid(0). Returns 0 to go on with the request (a match, nothing to check, or the user
/// ignored a mismatch), 1 when the user aborted; the run has then been ended.
[[nodiscard]] std::int16_t CheckSignature(Run& run);

}  // namespace fliglaf
