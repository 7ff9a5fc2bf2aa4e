#pragma once

#include <cstdint>
#include <initializer_list>

#include "usb/request/engine_run.h"
#include "usb/request/socket_supply.h"

namespace fliglaf::parallel {

/// The one programming mode, quorinprgmode(0), in which the engine reaches a device.
inline constexpr std::uint8_t kDeviceMode = 1;

[[nodiscard]] inline bool ReachesDevice(const EngineRun& run) {
  return run.vars.quorinprgmode[0] == kDeviceMode;
}

/// Sends the bytes of a serial instruction.
void SendInstruction(EngineRun& run, std::initializer_list<std::int32_t> bytes);
/// Clocks a byte in.
[[nodiscard]] std::uint8_t TakeByte(EngineRun& run);

/// Opens the programmer, powers the socket and has the device enable its programming. When SetVcc
/// returns 2 the result is kAborted, though the supply has been switched on.
[[nodiscard]] StartResult StartProgrammer(EngineRun& run);

}  // namespace fliglaf::parallel
