#include "usb/power_up.h"

#include <algorithm>
#include <array>

#include "families/family_table.h"
#include "usb/request/socket_supply.h"

namespace fliglaf {
namespace {

/// Programmer models whose programming voltage the library sets, on this channel.
constexpr std::array<std::int16_t, 2> kModelsWithVpp{5, 6};
constexpr std::uint8_t kVppChannel = 0;

}  // namespace

StartResult powerUpTarget(Run& run, WindowLines& lines) {
  const SharedVariables& vars = run.vars;
  Programmer& io = run.io;

  if (io.OpenProgrammer() == kNoProgrammer) return StartResult::kNotFound;
  if (std::ranges::find(kModelsWithVpp, vars.quorinmodeltype[0]) != kModelsWithVpp.end()) {
    io.SetVpp(Millivolts(vars.quorinbvpp[0]), kVppChannel);
    io.DelayMs(200);
  }
  const std::int32_t adapter = io.SetFigMode(vars.quorinfigmode[0]);
  if (adapter == kAdapterAbort) return StartResult::kAborted;
  io.SetVcc(Millivolts(vars.quorinbvcc[0]));
  SwitchSupplyPins(run);
  if (const auto family = MakeFamily(vars.quorinprgmode[0], run, lines)) family->Enter();
  io.DelayMs(100);
  return StartResult{adapter};
}

}  // namespace fliglaf
