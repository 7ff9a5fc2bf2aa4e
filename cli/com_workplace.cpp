// The workplace on Windows: the library's DLL, made through COM, on the stand-ins of the simulated
// bench or on the programmer's own components. Nothing has to be registered: manifests beside the
// program name the classes.
#include <optional>
#include <string>

#include "cli/chip_file_option.h"
#include "cli/workplace.h"
#include "host/com/client.h"
#include "host/com/request_recorder.h"
#include "images/utf8_path.h"
#include "images/whole_file.h"
#include "platform/win32/activation.h"
#include "platform/win32/host_watch.h"
#include "platform/win32/process.h"
#include "simulator/bench/fault_option.h"
#include "simulator/bench/simulated_bench.h"

namespace fliglaf::cli {
namespace {

namespace fs = std::filesystem;

/// As a list in a variable of the environment.
void Append(std::wstring& list, const fs::path& item) {
  if (!list.empty()) list += L';';
  list += item.wstring();
}

/// Tells the stand-ins, which run in this process, what the options ask of the bench.
void SetUpStandIns(const OperationOptions& options, const DeviceProfile& device,
                   std::int16_t instance) {
  std::wstring folders;
  for (const fs::path& folder : options.device.folders()) Append(folders, folder);
  std::wstring faults;
  for (const std::string& fault : options.bench.faults) Append(faults, Utf8Path(fault));
  const auto set = platform::SetEnvironmentText;
  set(L"FLIGLAF_IOHELPER", L"fliglaf.SimulatedIoHelper");
  set(L"FLIGLAF_SIM_DEVICE", Utf8Path(device.name).wstring());
  set(L"FLIGLAF_SIM_DEVICES", folders);
  set(L"FLIGLAF_SIM_INSTANCE", std::to_wstring(instance));
  set(L"FLIGLAF_SIM_CHIP", options.bench.chip_file.wstring());
  set(L"FLIGLAF_SIM_FAULTS", faults);
  set(L"FLIGLAF_SIM_REALTIME", options.bench.real_time ? L"1" : L"");
  set(L"FLIGLAF_SIM_PARALLEL", options.parallel ? L"1" : L"");
  set(L"FLIGLAF_SIM_VCD", options.bench.waveform_file.wstring());
  platform::AddLibraryFolder(platform::ProgramFolder() / "simulator");
}

/// Checks what the options ask of the bench before anything is done.
void CheckBench(const OperationOptions& options, const DeviceProfile& device,
                std::int16_t instance) {
  static_cast<void>(simulator::ParseFaults(options.bench.faults, device, "--fault"));
  simulator::SimulatedBench bench(device, instance, {.waveform_file = options.bench.waveform_file});
  UseChipFile(bench, options.bench.chip_file,
              options.writes_device ? MissingChipFile::kCreate : MissingChipFile::kRefuse,
              device.name);
}

class ComWorkplace : public Workplace {
 public:
  ComWorkplace(const OperationOptions& options, const DeviceProfile& device, std::int16_t instance)
      : options_(options),
        watch_([this] { on_turn(); }, [this](auto... box) { return on_box(box...); }) {
    MakeObject();
    mpu_->bufcommpu4(instance);
    if (options.bench.hardware) return;
    CheckBench(options, device, instance);
    SetUpStandIns(options, device, instance);
    stand_ins_.emplace(platform::ProgramFolder() / "simulator" / "fliglaf.simulator.manifest");
  }

  void Run(HostSession& session, Recorded recorded) override {
    platform::SetEnvironmentText(L"FLIGLAF_RECORD",
                                 is_recorded_ ? L"" : options_.record_file.wstring());
    is_recorded_ |= recorded == Recorded::kYes;
    mpu_->runMpu4Prg(session.usbenable());
    const std::u16string_view log = session.log();
    if (const auto found = log.rfind(kNotRecorded); found != std::u16string_view::npos) {
      not_recorded_ = fs::path(log.substr(found + kNotRecorded.size())).string();
    }
  }

  /// The library hides the programmer: its host sees a request that has not run.
  [[nodiscard]] StartUp start_up() const override { return StartUp::kNotTold; }

  /// The stand-ins keep the chip's contents, and the library its record, as each run ends; the
  /// waveform is complete when the library goes.
  [[nodiscard]] std::vector<std::string> Keep() override {
    if (not_recorded_.empty()) return {};
    return {"the run is not recorded: " + not_recorded_};
  }

 private:
  void MakeObject() {
    const platform::Activation library(platform::ProgramFolder() / "fliglaf.library.manifest");
    mpu_.emplace();
  }

  const OperationOptions& options_;
  platform::HostWatch watch_;
  std::optional<platform::Activation> stand_ins_;
  std::optional<MpuClient> mpu_;
  bool is_recorded_ = false;  ///< the request that the record is to hold
  std::string not_recorded_;
};

}  // namespace

std::unique_ptr<Workplace> MakeWorkplace(const OperationOptions& options,
                                         const DeviceProfile& device, std::int16_t instance) {
  return std::make_unique<ComWorkplace>(options, device, instance);
}

bool HasHardware() { return true; }

}  // namespace fliglaf::cli
