// The memory operations of the parallel engine, page by page: 256 bytes each.
#pragma once

#include <cstdint>

#include "usb/request/engine_run.h"

namespace fliglaf::parallel {

/// Judges a byte read at `address`: see ByteCheck. `mode` is a CheckMode as a number, as the text
/// of the engine's interface has it. Returns 1 to end the pass.
[[nodiscard]] std::int32_t dataout(EngineRun& run, std::int16_t data, std::int32_t address,
                                   std::int16_t mode);

/// Reads every page of the range and judges each byte.
void ScanPages(EngineRun& run, CheckMode mode);

/// Writes the range from the data buffer, then verifies it. A stop ends the writing after a page.
void ProgramPages(EngineRun& run);

/// Chip erase, then a blank check.
void EraseAndBlankCheck(EngineRun& run);

}  // namespace fliglaf::parallel
