#pragma once

#include <memory>
#include <string>
#include <vector>

#include "devices/catalogue/device_catalogue.h"
#include "platform/win32/win32_desktop.h"
#include "simulator/bench/simulated_bench.h"

namespace fliglaf::simulator {

/// The simulated bench behind the three stand-ins, set up by variables of the environment:
///
/// - FLIGLAF_SIM_DEVICE: name of a device profile, isp51-4k unless given
/// - FLIGLAF_SIM_DEVICES: folders with further profiles, separated by ';'
/// - FLIGLAF_SIM_INSTANCE: number of the shared blocks, 0 unless given
/// - FLIGLAF_SIM_CHIP: file that keeps the chip's contents
/// - FLIGLAF_SIM_FAULTS: faults as ParseFaults takes them, separated by ';'
/// - FLIGLAF_SIM_REALTIME: any text: every call takes as long as on the bench
/// - FLIGLAF_SIM_PARALLEL: any text: the programmer is one on the parallel port
/// - FLIGLAF_SIM_VCD: file for a waveform, complete when the components end
class SimulatedComponents {
 public:
  /// Throws std::exception with a text that names the variable or file that is wrong.
  SimulatedComponents();

  [[nodiscard]] Programmer& programmer() { return bench_->programmer(); }
  /// Ends the run and writes the chip's file, if there is one.
  void EndRun();
  /// See simulator::FaultReport.
  [[nodiscard]] std::vector<std::string> FaultReport() const { return bench_->FaultReport(); }
  /// Completes the waveform, if there is one. Throws ImageError.
  void KeepWaveform() { bench_->KeepWaveform(); }
  /// Starts a transfer; it goes on in the turns of the caller's message loop.
  void StartTransfer(std::span<std::uint8_t> destination, std::uint8_t& status);

 private:
  void GoOn();

  DeviceCatalogue devices_ = DeviceCatalogue::BuiltIn();
  platform::Win32Desktop desktop_;
  platform::Timer transfer_{desktop_, "transfer", [this] { GoOn(); }};
  std::unique_ptr<SimulatedBench> bench_;
};

/// The one of the process: begins with the first use.
[[nodiscard]] SimulatedComponents& TheComponents();
/// Ends it: called when the last helper object goes. Throws what KeepWaveform throws.
void EndComponents();

}  // namespace fliglaf::simulator
