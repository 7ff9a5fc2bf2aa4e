#pragma once

#include <cstdint>
#include <functional>

#include "platform/desktop.h"
#include "shared/shared_variables.h"

namespace fliglaf {

/// Carries out the request in quorinprgresult(1): one operation, nothing, or the automatic
/// sequence, in which a failed blank check asks the user and any other result but 0 ends it.
/// `run_operation` runs one operation code.
void RunRequest(SharedVariables& vars, platform::Desktop& desktop,
                const std::function<void(std::int16_t code)>& run_operation);

}  // namespace fliglaf
