#pragma once

#include <cstdint>

#include "platform/desktop.h"
#include "shared/shared_variables.h"

namespace fliglaf {

/// Shows the information box about the device's memory map: `number` 30 for a device with data
/// memory, identification locations and configuration words, 31 for one with program memory and one
/// configuration word; nothing for any other.
void ShowMemoryMap(const SharedVariables& vars, platform::Desktop& desktop, std::uint8_t number);

}  // namespace fliglaf
