#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "cli/waveform_file.h"
#include "devices/device_profile.h"
#include "simulator/bench.h"
#include "usb/programmer.h"

namespace fliglaf::cli {

/// The simulated bench as the command line's options describe it, with the chip's contents kept in
/// a file.
class SimulatedBench {
 public:
  struct Settings {
    std::filesystem::path chip_file;  ///< empty: the chip is new and forgotten afterwards
    std::span<const std::string> faults;
    bool parallel = false;  ///< a programmer on the parallel port
    bool real_time = false;
    std::filesystem::path waveform_file = {};  ///< empty: none
  };

  /// Throws UsageError for a device without a simulated chip, a fault that there is none of, and a
  /// chip file that is damaged or holds another device; ImageError for a file that cannot be
  /// written later.
  SimulatedBench(const DeviceProfile& device, std::int16_t instance, const Settings& settings);

  [[nodiscard]] Programmer& programmer();
  [[nodiscard]] simulator::Bench& bench() { return *bench_; }

  /// Writes the chip's contents to its file, if there is one. Throws ImageError when that fails.
  void KeepChip();
  /// Completes the waveform, if one was asked for: it ends here. Throws ImageError when that fails.
  void KeepWaveform();

 private:
  void LoadChip();

  std::string device_;
  std::filesystem::path chip_file_;
  std::unique_ptr<simulator::Bench> bench_;
  std::unique_ptr<Programmer> failing_;  ///< around the bench's programmer, where a call is to fail
  std::unique_ptr<WaveformFile> waveform_;
};

}  // namespace fliglaf::cli
