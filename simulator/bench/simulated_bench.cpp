#include "simulator/bench/simulated_bench.h"

#include <system_error>

#include "devices/kinds/device_kind.h"
#include "images/whole_file.h"
#include "simulator/bench/bench_error.h"
#include "simulator/bench/fault_option.h"
#include "simulator/chip_file.h"

namespace fliglaf::simulator {
namespace {

std::span<const std::uint8_t> Bytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

SimulatedBench::SimulatedBench(const DeviceProfile& device, std::int16_t instance,
                               const Settings& settings)
    : device_(device.name) {
  bench_ = std::make_unique<Bench>(device, instance, settings.faults, settings.real_time);
  if (settings.parallel) bench_->programmer().AttachToParallelPort();
  if (!settings.waveform_file.empty()) {
    waveform_ = std::make_unique<WaveformFile>(settings.waveform_file, device_, *bench_);
  }
}

/// Made before it is locked: two runs that make it at the same time would otherwise both believe
/// that it is theirs.
bool SimulatedBench::CreateChipFile(const std::filesystem::path& file) const {
  if (std::filesystem::exists(file)) return false;
  return CreateFileWhole(file, Bytes(SaveChip(bench_->chip(), device_)));
}

void SimulatedBench::UseChipFile(const std::filesystem::path& file) {
  CheckWritable(file);
  try {
    lock_.emplace(file);
    const auto bytes = ReadFileWhole(file);
    LoadChip(bench_->chip(), device_, {reinterpret_cast<const char*>(bytes.data()), bytes.size()},
             file.string());
  } catch (const platform::FileInUse& error) {
    throw BenchError(error.what());
  } catch (const std::system_error& error) {
    throw BenchError(file.string() + ": cannot be opened: " + error.code().message());
  } catch (const ChipFileError& error) {
    throw BenchError(error.what());
  }
  chip_file_ = file;
}

void SimulatedBench::KeepChip() {
  if (chip_file_.empty()) return;
  WriteFileWhole(chip_file_, Bytes(SaveChip(bench_->chip(), device_)), &*lock_);
}

std::vector<std::string> SimulatedBench::FaultReport() const {
  const PlannedFaults* const faults = bench_->faults();
  return faults == nullptr ? std::vector<std::string>{} : simulator::FaultReport(*faults);
}

void SimulatedBench::KeepWaveform() {
  if (waveform_ != nullptr) waveform_->Keep();
}

}  // namespace fliglaf::simulator
