#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "cli/device_options.h"
#include "cli/option_set.h"
#include "cli/progress.h"
#include "cli/questions.h"

namespace fliglaf::cli {

/// The programmer and the chip that a command works on: the simulated ones, or those on the desk.
struct BenchOptions {
  std::filesystem::path chip_file;
  std::vector<std::string> faults;
  bool real_time = false;
  std::filesystem::path waveform_file;  ///< where to write what happens at the socket
  bool hardware = false;                ///< the programmer itself

  void AddTo(OptionSet& options);
};

/// What every operation on a device takes.
struct OperationOptions {
  std::string command;  ///< its name
  DeviceOptions device;
  bool check_signature = true;
  MismatchAnswer on_mismatch = MismatchAnswer::kAsk;
  std::filesystem::path record_file;  ///< where to write the run's record
  bool parallel = false;              ///< the parallel-port engine instead of the USB engine
  BenchOptions bench;
  bool json = false;
  ProgressStyle progress = ProgressStyle::kAuto;
  bool writes_device = false;  ///< the command changes the device, so it makes a chip file

  /// All but the device, which a command adds before its own arguments.
  void AddTo(OptionSet& options);
  /// The device, once what else can be known to fail has been looked at. Throws UsageError,
  /// ProfileError, and ImageError for a record that could not be written.
  [[nodiscard]] const DeviceProfile& Begin();
};

/// The option for the file that keeps a simulated chip.
void AddChipFile(OptionSet& options, std::filesystem::path& file);

}  // namespace fliglaf::cli
