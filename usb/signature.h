#pragma once

#include "families/lines.h"
#include "usb/request/run.h"
#include "usb/request/signature_check.h"

namespace fliglaf {

/// Reads the signature of the device in the socket as its family has it read, and compares it with
/// quorincompid(0) and quorintypeid(0). A family without a signature passes.
[[nodiscard]] SignatureOutcome CheckSignature(Run& run, WindowLines& lines);

}  // namespace fliglaf
