// The workplace of the portable build: the library of this process on the simulated bench.
#include <ctime>
#include <iostream>
#include <string>

#include <fmt/format.h>

#include "cli/programmer_watch.h"
#include "cli/simulated_bench.h"
#include "cli/workplace.h"
#include "host/cls_mpu.h"
#include "images/whole_file.h"
#include "platform/portable/portable_desktop.h"
#include "record/recorder.h"

namespace fliglaf::cli {
namespace {

double LocalSecondsSinceMidnight() {
  const std::time_t now = std::time(nullptr);
  const std::tm* const local = std::localtime(&now);
  return local == nullptr ? 0 : local->tm_hour * 3600.0 + local->tm_min * 60.0 + local->tm_sec;
}

class PortableWorkplace : public Workplace {
 public:
  PortableWorkplace(const Options& options, const DeviceProfile& device, std::int16_t instance)
      : options_(options),
        bench_(device, instance,
               {.chip_file = options.chip_file,
                .faults = options.faults,
                .parallel = options.parallel,
                .real_time = options.real_time,
                .waveform_file = options.waveform_file}),
        watch_(bench_.programmer()),
        desktop_(bench_.bench(), LocalSecondsSinceMidnight()) {
    desktop_.on_turn = [this] { return on_turn(); };
    desktop_.on_box = [this](int style, std::u16string_view title, std::u16string_view prompt) {
      return on_box(style, title, prompt);
    };
    bench_.bench().programmer().on_turn = [this] { desktop_.DoEvents(); };
  }

  void Run(HostSession& session, Recorded recorded) override {
    if (options_.record_file.empty() || recorded == Recorded::kNo) {
      Library library(watch_, desktop_);
      clsMPU object(library);
      session.Open(object);
      session.Run(object);
    } else {
      RunRecorded(session);
    }
  }

  [[nodiscard]] StartUp start_up() const override {
    if (watch_.not_found()) return StartUp::kNotFound;
    if (watch_.adapter_missing()) return StartUp::kWrongAdapter;
    return watch_.supply_failed() ? StartUp::kNoSupply : StartUp::kDone;
  }

  void Keep() override {
    if (const auto conflicts = bench_.bench().chip().conflicts(); conflicts > 0) {
      std::cerr << fmt::format("the programmer drove a line against the chip {} times\n",
                               conflicts);
    }
    bench_.KeepChip();
    bench_.KeepWaveform();
    if (options_.record_file.empty()) return;
    if (!record_problem_.empty()) {
      throw ImageError(fmt::format("{}: the run cannot be recorded: {}",
                                   options_.record_file.string(), record_problem_));
    }
    WriteFileWhole(options_.record_file,
                   {reinterpret_cast<const std::uint8_t*>(record_.data()), record_.size()});
  }

 private:
  void RunRecorded(HostSession& session) {
    record::Recorder recorder(watch_, desktop_, session.variables(), record_);
    Library library(recorder.programmer(), recorder.desktop());
    clsMPU object(library);
    session.Open(object);
    recorder.Begin(fmt::format("runMpu4Prg({})", session.usbenable()));
    session.Run(object);
    if (!recorder.End()) record_problem_ = recorder.problem();
  }

  const Options& options_;
  SimulatedBench bench_;
  ProgrammerWatch watch_;
  platform::PortableDesktop desktop_;
  std::string record_;
  std::string record_problem_;
};

}  // namespace

std::unique_ptr<Workplace> MakeWorkplace(const Options& options, const DeviceProfile& device,
                                         std::int16_t instance) {
  return std::make_unique<PortableWorkplace>(options, device, instance);
}

bool HasHardware() { return false; }

}  // namespace fliglaf::cli
