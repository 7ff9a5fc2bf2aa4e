#include "cli/operation_options.h"

#include "cli/workplace.h"
#include "images/whole_file.h"
#include "platform/terminal.h"
#include "simulator/bench/fault_option.h"

namespace fliglaf::cli {
void AddChipFile(OptionSet& options, std::filesystem::path& file) {
  options.Under("Simulated bench");
  options.File("--chip",
               "Keeps the simulated chip's contents between calls; without it the chip is new",
               file);
}

void BenchOptions::AddTo(OptionSet& options) {
  AddChipFile(options, chip_file);
  options.Texts("--fault", "FAULT", "A fault from the list below; may be given more than once",
                faults);
  options.Flag("--real-time", "Take as long as a real programmer would", real_time);
  options.File("--vcd",
               "Write a Value Change Dump of the lines, for GTKWave, PulseView and sigrok-cli",
               waveform_file);
  std::vector<std::vector<std::string>> kinds;
  for (const auto& [usage, meaning] : simulator::FaultHelps()) kinds.push_back({usage, meaning});
  options.Explain("Faults", std::move(kinds));
  options.Under({});
  if (!HasHardware()) return;
  options.Flag("--hardware", "Use the installed programmer, not the simulated bench", hardware);
  options.Exclude("--hardware", {"--chip", "--fault", "--real-time", "--vcd"});
}

void OperationOptions::AddTo(OptionSet& options) {
  options.Flag("--no-signature", "Do not check the device's signature first", check_signature,
               false);
  options.Choice<MismatchAnswer>(
      "--on-mismatch", "What to do about a wrong signature, instead of asking", on_mismatch,
      {{"abort", MismatchAnswer::kAbort},
       {"ignore", MismatchAnswer::kIgnore},
       {"retry", MismatchAnswer::kRetry}});
  options.File("--record", "Write a record of the run, for \"fliglaf replay\"", record_file);
  options.Flag("--parallel",
               "Use a programmer on the parallel port, for devices of family 1 and those with "
               "configuration words",
               parallel);
  options.Flag("--json", "Print one JSON object with result, log, time and counts", json);
  options.Choice<ProgressStyle>("--progress", "How to show progress on standard error", progress,
                                {{"auto", ProgressStyle::kAuto},
                                 {"bar", ProgressStyle::kBar},
                                 {"json", ProgressStyle::kJson},
                                 {"lines", ProgressStyle::kLines},
                                 {"none", ProgressStyle::kNone}});
  device.AddFolders(options);
  bench.AddTo(options);
}

const DeviceProfile& OperationOptions::Begin() {
  platform::CatchStopSignals();
  if (!record_file.empty()) CheckWritable(record_file);
  return device.Find();
}

}  // namespace fliglaf::cli
