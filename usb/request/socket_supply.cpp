#include "usb/request/socket_supply.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace fliglaf {
namespace {

constexpr double kMarginStep = 0.05;
constexpr std::uint8_t kOn = 1;

/// Halves go to the even neighbour.
std::int32_t MarginSupply(const EngineRun& run, int sign) {
  const double steps = run.vars.quorinwlverifyvcc[0];
  const double margin = sign * steps * kMarginStep;
  const double supply = std::nearbyint(run.vars.quorinbvcc[0] * (1 + margin));
  // Clamped so that Millivolts() still fits 32 bits.
  constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max() / 10;
  return static_cast<std::int32_t>(std::clamp<double>(supply, -kLargest, kLargest));
}

}  // namespace

void SwitchSupplyPins(EngineRun& run) {
  const SharedVariables& vars = run.vars;
  Programmer& io = run.io;
  io.SetGndPin(vars.quorinbgndpin[0], kOn);
  if (vars.quorinbgndpin[1] != 0) io.SetGndPin(vars.quorinbgndpin[1], kOn);
  io.DelayMs(500);
  io.SetOutputs(0);
  io.SetVccPin(vars.quorinbvccpin[0], kOn);
  if (vars.quorinbvccpin[1] != 0) io.SetVccPin(vars.quorinbvccpin[1], kOn);
}

std::int32_t SetMarginSupply(EngineRun& run, int sign) {
  const std::int32_t supply = MarginSupply(run, sign);
  run.io.SetVcc(Millivolts(supply));
  return supply;
}

}  // namespace fliglaf
