// How a request begins and ends, the same on both engines.
#pragma once

#include <functional>

#include "usb/request/engine_run.h"

namespace fliglaf {

/// Carries out `request`. What it throws ends the run: result::kFailure, unless the user has
/// stopped, a line of the log that says why, and EndRun.
void CarryOut(EngineRun& run, const std::function<void()>& request);

/// Runs what the host asks for, operation after operation by `run_operation`, notes the time it
/// took, and signals whether it passed.
void RunRequest(EngineRun& run, const std::function<void(std::int16_t code)>& run_operation);

}  // namespace fliglaf
