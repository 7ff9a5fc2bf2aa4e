#pragma once

#include <cstdint>
#include <span>

#include "usb/request/engine_run.h"

namespace fliglaf {

struct Latch {
  std::uint8_t value;
  std::uint8_t number;
};

/// Writes them in their order.
inline void WriteLatches(EngineRun& run, std::span<const Latch> latches) {
  for (const Latch& latch : latches) run.io.WriteLatch(latch.value, latch.number);
}

}  // namespace fliglaf
