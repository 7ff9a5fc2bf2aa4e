#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "devices/device_profile.h"
#include "simulator/bench/bench.h"

namespace fliglaf::simulator {

/// The faults that `list` names, for a bench with this device. A text may hold several, separated
/// by ';'. Throws BenchError for an unknown fault, an argument that is missing or out of range, and
/// faults that contradict each other; the message begins with `source`.
[[nodiscard]] Faults ParseFaults(std::span<const std::string> list, const DeviceProfile& device,
                                 std::string_view source);

struct FaultHelp {
  std::string usage;    ///< "stuck=ADDRESS.BIT=VALUE"
  std::string meaning;  ///< without a full stop
};
/// Every fault, and at the end what OPERATION stands for.
[[nodiscard]] std::vector<FaultHelp> FaultHelps();

/// What a user cannot see in the log of a run: the random faults, and the faults of calls that were
/// not reached. A line each, which begins with the fault.
[[nodiscard]] std::vector<std::string> FaultReport(const PlannedFaults& faults);

}  // namespace fliglaf::simulator
