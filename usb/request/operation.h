// The host's operation codes.
#pragma once

#include <cstdint>
#include <functional>

#include "usb/request/engine_run.h"

namespace fliglaf::operation {

inline constexpr std::int16_t kRead = 2;
inline constexpr std::int16_t kVerify = 3;
inline constexpr std::int16_t kBlankCheck = 4;
inline constexpr std::int16_t kCompare = 5;
/// Program, with its verify. Codes below are read-type operations.
inline constexpr std::int16_t kProgram = 6;
[[nodiscard]] constexpr CheckMode CheckModeOf(std::int16_t code) {
  return CheckMode{static_cast<std::int16_t>(code - kRead)};
}
// 8 to 11 are erase, lock and configuration operations; which is which depends on the family.

}  // namespace fliglaf::operation

namespace fliglaf {

/// Runs operation `code`: result and progress reset, start line, `routine`, the listing of a
/// compare, result line. The outcome is quorinprgresult(0).
void RunNoted(EngineRun& run, std::int16_t code, const std::function<void()>& routine);

}  // namespace fliglaf
