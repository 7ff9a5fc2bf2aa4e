#include "simulator/bench/simulated_bench.h"

#include <system_error>

#include "devices/memory_layout.h"
#include "images/whole_file.h"
#include "simulator/bench/bench_error.h"
#include "simulator/bench/fault_option.h"
#include "simulator/chip_file.h"

namespace fliglaf::simulator {
namespace {

std::optional<ConfigWordPart> ConfigWords(const DeviceProfile& device) {
  if (device.config_words == 0) return std::nullopt;
  return ConfigWordPart{.socket = {.pins = device.pin_count, .mode = device.family},
                        .words = device.config_words};
}

ChipDescription Describe(const DeviceProfile& device) {
  const ImageLayout memory = LayoutOf(device);
  return {.family = device.family,
          .option = device.option,
          .flash_bytes = static_cast<std::uint32_t>(memory.main_bytes),
          .page_bytes = static_cast<std::uint32_t>(device.page * device.address_bytes),
          .eeprom_bytes = static_cast<std::uint32_t>(memory.data_bytes),
          .signature = device.signature.value_or(Signature{}),
          .supply = {.vcc = device.vcc_pins,
                     .gnd = device.gnd_pins,
                     .vpp = device.vpp_pins,
                     .nominal_millivolts = device.supply * 10},
          .byte_write_us = device.chip.byte_write_us,
          .page_write_us = device.chip.page_write_us,
          .eeprom_write_us = device.chip.eeprom_write_us,
          .config_write_us = device.chip.config_write_us,
          .erase_ms = device.chip.erase_ms,
          .lock_write_ms = device.chip.lock_write_ms,
          .config_words = ConfigWords(device)};
}

std::span<const std::uint8_t> Bytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

SimulatedBench::SimulatedBench(const DeviceProfile& device, std::int16_t instance,
                               const Settings& settings)
    : device_(device.name) {
  if (!Bench::Supports(device.family)) {
    throw BenchError(device.name + ": there is no simulated chip of family " +
                     std::to_string(device.family) + " yet");
  }
  bench_ = std::make_unique<Bench>(Describe(device), instance, settings.faults, settings.real_time);
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
