#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "simulator/bench/bench.h"
#include "usb/components/operations.h"

namespace fliglaf::simulator {

/// The faults that the --fault options name.
struct FaultOptions {
  struct Call {
    Op operation;
    unsigned nth = 1;
  };
  Faults bench;
  std::optional<Call> failing_call;
};

/// Throws BenchError for an unknown fault, an address outside `memory_bytes`, and an unknown
/// operation.
[[nodiscard]] FaultOptions ParseFaults(std::span<const std::string> faults,
                                       std::uint32_t memory_bytes);

}  // namespace fliglaf::simulator
