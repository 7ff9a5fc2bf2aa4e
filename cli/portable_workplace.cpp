// The workplace of the portable build: the library of this process on the simulated bench.
#include <ctime>
#include <string>

#include <fmt/format.h>

#include "cli/attempt.h"
#include "cli/chip_file_option.h"
#include "cli/programmer_watch.h"
#include "cli/report.h"
#include "cli/workplace.h"
#include "host/cls_mpu.h"
#include "images/whole_file.h"
#include "platform/portable/portable_desktop.h"
#include "record/recorder.h"
#include "simulator/bench/fault_option.h"
#include "simulator/bench/simulated_bench.h"

namespace fliglaf::cli {
namespace {

double LocalSecondsSinceMidnight() {
  const std::time_t now = std::time(nullptr);
  const std::tm* const local = std::localtime(&now);
  return local == nullptr ? 0 : local->tm_hour * 3600.0 + local->tm_min * 60.0 + local->tm_sec;
}

class PortableWorkplace : public Workplace {
 public:
  PortableWorkplace(const OperationOptions& options, const DeviceProfile& device,
                    std::int16_t instance)
      : options_(options),
        bench_(device, instance,
               {.faults = simulator::ParseFaults(options.bench.faults, device, "--fault"),
                .parallel = options.parallel,
                .real_time = options.bench.real_time,
                .waveform_file = options.bench.waveform_file}),
        watch_(bench_.programmer()),
        desktop_(bench_.bench(), LocalSecondsSinceMidnight()) {
    desktop_.on_turn = [this] { return on_turn(); };
    desktop_.on_box = [this](int style, std::u16string_view title, std::u16string_view prompt) {
      return on_box(style, title, prompt);
    };
    bench_.bench().programmer().on_turn = [this] { desktop_.DoEvents(); };
    UseChipFile(bench_, options.bench.chip_file,
                options.writes_device ? MissingChipFile::kCreate : MissingChipFile::kRefuse,
                device.name);
  }

  void Run(HostSession& session, Recorded recorded) override {
    if (options_.record_file.empty() || is_recorded_) {
      Library library(watch_, desktop_);
      clsMPU object(library);
      session.Open(object);
      session.Run(object);
    } else {
      RunRecorded(session);
      is_recorded_ = recorded == Recorded::kYes;
    }
  }

  [[nodiscard]] StartUp start_up() const override { return watch_.start_up(); }

  [[nodiscard]] std::vector<std::string> Keep() override {
    if (const auto conflicts = bench_.bench().chip().conflicts(); conflicts > 0) {
      PrintProblem(fmt::format("the programmer drove a line against the chip {} time{}", conflicts,
                               conflicts == 1 ? "" : "s"));
    }
    for (const std::string& line : bench_.FaultReport()) PrintProblem("--fault " + line);
    std::vector<std::string> problems;
    Attempt(problems, [this] { bench_.KeepChip(); });
    Attempt(problems, [this] { bench_.KeepWaveform(); });
    if (!record_.empty()) Attempt(problems, [this] { KeepRecord(); });
    return problems;
  }

 private:
  void KeepRecord() {
    if (!record_problem_.empty()) {
      throw ImageError(fmt::format("{}: the run cannot be recorded: {}",
                                   options_.record_file.string(), record_problem_));
    }
    WriteFileWhole(options_.record_file,
                   {reinterpret_cast<const std::uint8_t*>(record_.data()), record_.size()});
  }

  void RunRecorded(HostSession& session) {
    record_.clear();
    record_problem_.clear();
    record::Recorder recorder(watch_, desktop_, session.variables(), record_);
    Library library(recorder.programmer(), recorder.desktop());
    clsMPU object(library);
    session.Open(object);
    recorder.Begin(fmt::format("runMpu4Prg({})", session.usbenable()));
    session.Run(object);
    if (!recorder.End()) record_problem_ = recorder.problem();
  }

  const OperationOptions& options_;
  simulator::SimulatedBench bench_;
  ProgrammerWatch watch_;
  platform::PortableDesktop desktop_;
  bool is_recorded_ = false;  ///< the request that the record is to hold
  std::string record_;
  std::string record_problem_;
};

}  // namespace

std::unique_ptr<Workplace> MakeWorkplace(const OperationOptions& options,
                                         const DeviceProfile& device, std::int16_t instance) {
  return std::make_unique<PortableWorkplace>(options, device, instance);
}

bool HasHardware() { return false; }

}  // namespace fliglaf::cli
