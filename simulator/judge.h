#pragma once

#include <cstdint>
#include <functional>

#include "shared/shared_variables.h"

namespace fliglaf::simulator {

/// What the programmer's component does with one byte of the device: stores it (check mode 0),
/// verifies it against the data buffer (1), against an erased cell (2), or lists a difference (3);
/// any other mode accepts it. The buffer index is `address` as it stands. Returns 1 to end the
/// pass; the note and the result then stand in the shared variables. Throws RangeError for an
/// address outside the data buffer.
/// Where a difference is to be listed `turn`, if there is one, lets the message loop run; a stop
/// request that then stands ends the pass.
[[nodiscard]] std::int32_t Judge(SharedVariables& vars, std::int32_t data, std::int32_t address,
                                 std::int32_t check_mode, const std::function<void()>& turn);

}  // namespace fliglaf::simulator
