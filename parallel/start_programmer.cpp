#include "parallel/start_programmer.h"

#include <array>

namespace fliglaf::parallel {
namespace {

struct Setting {
  std::uint8_t value;
  std::uint8_t number;
};

constexpr std::array kLatches{Setting{0x00, 3}, Setting{0x08, 2}, Setting{0x02, 1},
                              Setting{0x80, 0}};
/// The lines of the serial interface: the shifter's bytes, one register each.
constexpr std::array kShifter{Setting{0x00, 0x36}, Setting{0x08, 0x37}, Setting{0x10, 0x38},
                              Setting{0xA0, 0x39}, Setting{0x02, 0x3A}, Setting{0x01, 0x3B},
                              Setting{0x00, 0x3C}, Setting{0x08, 0x3D}, Setting{0x08, 0x3E}};

void EnableProgramming(EngineRun& run) {
  for (const auto& [value, latch] : kLatches) run.io.WriteLatch(value, latch);
  run.io.DelayMs(100);
  for (const auto& [value, number] : kShifter) run.io.WriteRegister(value, number);
  SendInstruction(run, {0xAC, 0x53, 0xFF});
  static_cast<void>(TakeByte(run));  // a device that does not answer fails its operation
}

}  // namespace

void SendInstruction(EngineRun& run, std::initializer_list<std::int32_t> bytes) {
  for (const std::int32_t byte : bytes) run.io.WriteRegister(byte, reg::kShiftOut);
}

std::uint8_t TakeByte(EngineRun& run) {
  run.io.WriteRegister(1, reg::kCapture);
  return static_cast<std::uint8_t>(run.io.ReadRegister(reg::kCaptured));
}

StartResult StartProgrammer(EngineRun& run) {
  const SharedVariables& vars = run.vars;
  Programmer& io = run.io;
  if (io.OpenProgrammer() == kNoProgrammer) return StartResult::kNotFound;
  if (io.SetFigMode(vars.quorinfigmode[0]) == kAdapterAbort) return StartResult::kAborted;
  const std::int32_t supply = io.SetVcc(Millivolts(vars.quorinbvcc[0]));
  if (supply == kSupplyFailed) return StartResult::kNotFound;

  SwitchSupplyPins(run);
  if (ReachesDevice(run)) {
    EnableProgramming(run);
  } else {
    io.ResetInterface();
  }
  io.DelayMs(100);
  return StartResult{supply};
}

}  // namespace fliglaf::parallel
