#include "simulator/windows/simulated_components.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "images/utf8_path.h"
#include "platform/win32/module.h"
#include "simulator/bench/fault_option.h"

namespace fliglaf::simulator {
namespace {

constexpr char kDefaultDevice[] = "isp51-4k";

/// Windows gives timers no shorter interval than 10 ms; less is asked for all the same.
constexpr int kTransferIntervalMs = 1;

/// A variable as UTF-8.
std::string Setting(const wchar_t* name) {
  const std::wstring wide = platform::EnvironmentText(name);
  std::string text(wide.size() * 3, '\0');
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), text.data(),
                          static_cast<int>(text.size()), nullptr, nullptr);
  text.resize(static_cast<std::size_t>(length));
  return text;
}

std::int16_t InstanceNumber() {
  const std::string text = Setting(L"FLIGLAF_SIM_INSTANCE");
  std::int16_t number = 0;
  const char* const end = text.data() + text.size();
  if (text.empty()) return number;
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) {
    throw std::invalid_argument("FLIGLAF_SIM_INSTANCE is \"" + text +
                                "\"; it must be a number from -32768 to 32767");
  }
  return number;
}

/// The parts of a variable that ';' separates, without empty ones.
std::vector<std::string> ListSetting(const wchar_t* name) {
  std::vector<std::string> parts;
  const std::string text = Setting(name);
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(';', start), text.size());
    if (end > start) parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

Faults FaultsFor(const DeviceProfile& device) {
  const std::string text = Setting(L"FLIGLAF_SIM_FAULTS");
  return text.empty() ? Faults{} : ParseFaults({&text, 1}, device, "FLIGLAF_SIM_FAULTS");
}

const DeviceProfile& Device(const DeviceCatalogue& devices) {
  std::string name = Setting(L"FLIGLAF_SIM_DEVICE");
  if (name.empty()) name = kDefaultDevice;
  if (const DeviceProfile* device = devices.Find(name)) return *device;
  throw std::invalid_argument("FLIGLAF_SIM_DEVICE is \"" + name +
                              "\", which is not a known device");
}

SimulatedComponents*& Current() {
  static SimulatedComponents* current = nullptr;
  return current;
}

}  // namespace

SimulatedComponents::SimulatedComponents() {
  for (const std::string& folder : ListSetting(L"FLIGLAF_SIM_DEVICES"))
    devices_.AddFolder(Utf8Path(folder));
  const DeviceProfile& device = Device(devices_);
  bench_ = std::make_unique<SimulatedBench>(
      device, InstanceNumber(),
      SimulatedBench::Settings{
          .faults = FaultsFor(device),
          .parallel = !platform::EnvironmentText(L"FLIGLAF_SIM_PARALLEL").empty(),
          .real_time = !platform::EnvironmentText(L"FLIGLAF_SIM_REALTIME").empty(),
          .waveform_file = platform::EnvironmentText(L"FLIGLAF_SIM_VCD")});
  if (const std::wstring chip = platform::EnvironmentText(L"FLIGLAF_SIM_CHIP"); !chip.empty()) {
    (void)bench_->CreateChipFile(chip);
    bench_->UseChipFile(chip);
  }
  bench_->bench().programmer().on_turn = [this] { desktop_.DoEvents(); };
}

void SimulatedComponents::EndRun() {
  transfer_.Disable();
  programmer().EndRun();
  bench_->KeepChip();
}

void SimulatedComponents::StartTransfer(std::span<std::uint8_t> destination, std::uint8_t& status) {
  programmer().usbbulkread(destination, status);
  transfer_.Enable(kTransferIntervalMs);
}

void SimulatedComponents::GoOn() {
  if (const auto next = bench_->bench().NextEvent()) {
    bench_->bench().WaitUntil(*next);
  } else {
    transfer_.Disable();
  }
}

SimulatedComponents& TheComponents() {
  SimulatedComponents*& current = Current();
  if (current == nullptr) current = std::make_unique<SimulatedComponents>().release();
  return *current;
}

void EndComponents() {
  const std::unique_ptr<SimulatedComponents> ended(std::exchange(Current(), nullptr));
  if (ended != nullptr) ended->KeepWaveform();
}

}  // namespace fliglaf::simulator
