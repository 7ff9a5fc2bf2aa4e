#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devices/device_profile.h"
#include "platform/file_lock.h"
#include "simulator/bench/bench.h"
#include "simulator/bench/waveform_file.h"
#include "usb/components/programmer.h"

namespace fliglaf::simulator {

/// The simulated bench as the command line's options describe it, with the chip's contents kept in
/// a file.
class SimulatedBench {
 public:
  struct Settings {
    Faults faults = {};
    bool parallel = false;  ///< a programmer on the parallel port
    bool real_time = false;
    std::filesystem::path waveform_file = {};  ///< empty: none
  };

  /// Throws ImageError for a waveform that cannot be written.
  SimulatedBench(const DeviceProfile& device, std::int16_t instance, const Settings& settings);

  [[nodiscard]] Programmer& programmer() { return bench_->io(); }
  [[nodiscard]] Bench& bench() { return *bench_; }

  /// Takes the chip's contents from a file, in which KeepChip stores them; no other process can use
  /// it while this lives. Without a file the chip is new. Throws BenchError for one that is
  /// damaged, in use or holds another device, ImageError for one that could not be written later.
  void UseChipFile(const std::filesystem::path& file);
  /// Makes a file for a new chip unless it exists. True if it was made.
  [[nodiscard]] bool CreateChipFile(const std::filesystem::path& file) const;

  /// Writes the chip's contents to its file, if there is one. Throws ImageError when that fails.
  void KeepChip();
  /// See simulator::FaultReport; empty for a bench without faults.
  [[nodiscard]] std::vector<std::string> FaultReport() const;
  /// Completes the waveform, if one was asked for: it ends here. Throws ImageError when that fails.
  void KeepWaveform();

 private:
  std::string device_;
  std::filesystem::path chip_file_;
  std::unique_ptr<Bench> bench_;
  std::optional<platform::FileLock> lock_;  ///< on the chip file
  std::unique_ptr<WaveformFile> waveform_;
};

}  // namespace fliglaf::simulator
