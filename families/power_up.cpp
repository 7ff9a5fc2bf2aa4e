#include "families/power_up.h"

#include <algorithm>
#include <array>

#include "families/avr_jtag.h"
#include "families/flash_register.h"
#include "families/serial_entry.h"
#include "families/serial_page_entry.h"
#include "families/two_wire.h"

namespace fliglaf {
namespace {

/// Programmer models whose programming voltage the library sets.
constexpr std::int16_t kModelsWithVpp[] = {5, 6};

/// How each family enters programming mode once the socket is powered; a family without a row has
/// the common steps only.
struct FamilyEntry {
  std::uint8_t family;
  void (*enter)(Run&);
};

constexpr std::array kEntries{
    FamilyEntry{1, enterIspFam1},        FamilyEntry{2, enterIspFam2},
    FamilyEntry{3, enterIspFam3},        FamilyEntry{4, enterAvrJtag},
    FamilyEntry{5, enterAvrJtag},        FamilyEntry{6, enterAvrJtag},
    FamilyEntry{7, enterAvrJtag},        FamilyEntry{8, enterFlashRegister},
    FamilyEntry{9, enterFlashRegister},  FamilyEntry{10, enterFlashRegister},
    FamilyEntry{11, enterFlashRegister}, FamilyEntry{12, enterTwoWire12},
    FamilyEntry{13, enterSerialPage},    FamilyEntry{14, enterSerialPage},
    FamilyEntry{15, enterFramedPage},    FamilyEntry{16, enterTwoWire16},
};

void EnterProgrammingMode(Run& run) {
  const auto found = std::ranges::find(kEntries, run.vars.quorinprgmode[0], &FamilyEntry::family);
  if (found != kEntries.end()) found->enter(run);
}

}  // namespace

std::int32_t powerUpTarget(Run& run) {
  const SharedVariables& vars = run.vars;
  Programmer& io = run.io;

  if (io.OpenProgrammer() == kNoProgrammer) return kNoProgrammer;
  if (std::ranges::find(kModelsWithVpp, vars.quorinmodeltype[0]) != std::end(kModelsWithVpp)) {
    io.SetVpp(vars.quorinbvpp[0] * 10, 0);
    io.DelayMs(200);
  }
  const std::int32_t adapter = io.SetFigMode(vars.quorinfigmode[0]);
  if (adapter == kAdapterAbort) return kAdapterAbort;
  io.SetVcc(vars.quorinbvcc[0] * 10);

  io.SetGndPin(vars.quorinbgndpin[0], 1);
  if (vars.quorinbgndpin[1] > 0) io.SetGndPin(vars.quorinbgndpin[1], 1);
  io.DelayMs(500);
  io.SetOutputs(0);
  io.SetVccPin(vars.quorinbvccpin[0], 1);
  if (vars.quorinbvccpin[1] > 0) io.SetVccPin(vars.quorinbvccpin[1], 1);

  EnterProgrammingMode(run);
  io.DelayMs(100);
  return adapter;
}

}  // namespace fliglaf
