#pragma once

#include "shared/shared_variables.h"

namespace fliglaf {

/// Writes the erased or factory values of the selected device into the configuration area of
/// quorinibuffer; nothing for a family without one. Throws RangeError, before anything is written,
/// when the area lies outside the buffer.
void PresetConfiguration(SharedVariables& vars);

}  // namespace fliglaf
