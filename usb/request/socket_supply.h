// The socket's supply, the same on both engines.
#pragma once

#include <cstdint>

#include "usb/request/engine_run.h"

namespace fliglaf {

/// How the start of a run ended: what the last start-up call returned. Values without a name mean
/// that the programmer is ready.
enum class StartResult : std::int32_t {
  kReady = 0,
  kNotFound = 1,  ///< on the parallel port also: no supply
  kAborted = 2    ///< the adapter is missing
};

/// The host and the margin tables count supplies in units of 10 mV, the programmer in mV.
[[nodiscard]] constexpr std::int32_t Millivolts(std::int32_t tens_of_millivolts) {
  return tens_of_millivolts * 10;
}

/// Connects the ground pins, waits until the supply has settled, releases the outputs and connects the
/// supply pins: one or two of each.
void SwitchSupplyPins(EngineRun& run);

/// Raises the supply of a verify pass by quorinwlverifyvcc(0) times 5 %, or lowers it: `sign` is 1
/// or -1. Returns what was set, in units of 10 mV.
std::int32_t SetMarginSupply(EngineRun& run, int sign);

}  // namespace fliglaf
