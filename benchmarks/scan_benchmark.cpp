// Scans a second: pairs of a 4-bit instruction scan and a 15-bit data scan, as families 4 to 7
// queue them, into a programmer that only counts, and into the simulated one, where a chip's test
// access port follows every clock.
#include <benchmark/benchmark.h>

#include "benchmarks/counting_sink.h"
#include "cli/host_session.h"
#include "devices/catalogue/device_catalogue.h"
#include "families/software_tap.h"
#include "platform/portable/portable_desktop.h"
#include "simulator/bench/simulated_bench.h"
#include "usb/power_up.h"
#include "usb/request/run.h"

namespace fliglaf {
namespace {

constexpr std::int32_t kIdCode = 0x1;
constexpr std::int32_t kProgCommands = 0x5;
constexpr std::int32_t kNoOperation = 0x3300;
/// Pairs between two flushes of the queue.
constexpr int kPairs = 100;

/// A part with JTAG on the bench, and the test access port of its family.
class Scans {
 public:
  /// `sink`: takes the scans in the bench's place.
  explicit Scans(Programmer* sink = nullptr)
      : run_(session_.variables(), sink != nullptr ? *sink : bench_.programmer(), desktop_, window_,
             watchdog_) {
    static_cast<void>(powerUpTarget(run_, lines_));
  }

  void Measure(benchmark::State& state) {
    for (auto _ : state) {
      for (int i = 0; i < kPairs; ++i) {
        tap_.scanIr(kProgCommands, 4);
        tap_.scanDr(kNoOperation, 15);
      }
      run_.io.FlushQueue();
    }
    state.counters["scans_per_s"] = benchmark::Counter(
        2.0 * kPairs * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
  }

  /// Whether the chip is where the scans have led it: it answers with its maker's code.
  [[nodiscard]] bool InStep() {
    tap_.scanIr(kIdCode, 4);
    return tap_.ReadAnswerNow(0) == 0x3F;
  }

 private:
  const DeviceCatalogue catalogue_ = DeviceCatalogue::BuiltIn();
  const DeviceProfile& device_ = *catalogue_.Find("jtag-page-64k");
  cli::HostSession session_{cli::HostSession::FreeInstance(), device_, cli::Engine::kUsb};
  simulator::SimulatedBench bench_{device_, session_.instance(), {.faults = {}}};
  platform::PortableDesktop desktop_{bench_.bench()};
  platform::Form window_;
  platform::Timer watchdog_{desktop_, "none", [] {}};
  WindowLines lines_;
  Run run_;
  SoftwareTap tap_{run_, lines_.jtag};
};

void BM_ScansIntoACountingSink(benchmark::State& state) {
  CountingSink sink;
  Scans scans(&sink);
  scans.Measure(state);
  benchmark::DoNotOptimize(sink.sum);
}
BENCHMARK(BM_ScansIntoACountingSink);

void BM_ScansIntoTheSimulatedProgrammer(benchmark::State& state) {
  Scans scans;
  scans.Measure(state);
  if (!scans.InStep()) state.SkipWithError("the chip has lost its place");
}
BENCHMARK(BM_ScansIntoTheSimulatedProgrammer);

}  // namespace
}  // namespace fliglaf
