// Program with verify on every device that has a simulated chip, library, programmer and chip in
// one process: bytes shifted over the lines in a second of CPU time, and CPU time for a byte of the
// image, which is the same for a small and a large device of a family.
#include <algorithm>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "cli/host_session.h"
#include "devices/catalogue/device_catalogue.h"
#include "devices/kinds/device_kind.h"
#include "platform/portable/portable_desktop.h"
#include "simulator/bench/simulated_bench.h"
#include "usb/components/forwarding_programmer.h"
#include "usb/request/operation.h"

namespace fliglaf {
namespace {

/// Counts the bytes that go over the lines.
class WireBytes : public ForwardingProgrammer {
 public:
  using ForwardingProgrammer::ForwardingProgrammer;
  std::int64_t bytes = 0;

 protected:
  bool OnCall(Op op, const Arguments& arguments) override {
    constexpr std::uint8_t kBytes[] = {reg::kShiftOut, reg::kCapture, reg::kFrameByte,
                                       reg::kFrameIn};
    const bool write = op == Op::kWriteRegister || op == Op::kQueueRegisterWrite;
    if (write && std::ranges::find(kBytes, arguments[1]) != std::end(kBytes)) ++bytes;
    return true;
  }
};

/// A bench, a host and a random image for one device.
class Job {
 public:
  explicit Job(const DeviceProfile& device)
      : session_(cli::HostSession::FreeInstance(), device, cli::Engine::kUsb),
        bench_(device, session_.instance(), {.faults = {}}),
        desktop_(bench_.bench()) {
    const ImageLayout layout = LayoutOf(device);
    std::mt19937 random(1);
    for (std::int64_t i = 0; i < layout.main_bytes; ++i) Fill(i, random());
    for (std::int64_t i = 0; i < layout.data_bytes; ++i) Fill(layout.data_start + i, random());
  }

  /// The result, after programming and verifying through `programmer`.
  int Run(Programmer& programmer) {
    Library library(programmer, desktop_);
    clsMPU object(library);
    session_.Request(kCodes);
    session_.Open(object);
    session_.Run(object);
    return session_.result();
  }
  [[nodiscard]] Programmer& programmer() { return bench_.programmer(); }

 private:
  static constexpr std::uint8_t kCodes[] = {operation::kProgram};

  void Fill(std::int64_t index, std::uint_fast32_t value) {
    session_.image()[static_cast<std::size_t>(index)] = static_cast<std::uint8_t>(value);
  }

  cli::HostSession session_;
  simulator::SimulatedBench bench_;
  platform::PortableDesktop desktop_;
};

void ProgramWithVerify(benchmark::State& state, const DeviceProfile& device) {
  std::int64_t bytes = 0;
  {
    Job job(device);
    WireBytes counting(job.programmer());
    if (job.Run(counting) != 0) return state.SkipWithError("the chip was not programmed");
    bytes = counting.bytes;
  }
  for (auto _ : state) {
    state.PauseTiming();
    Job job(device);
    state.ResumeTiming();
    benchmark::DoNotOptimize(job.Run(job.programmer()));
  }
  const auto runs = static_cast<std::int64_t>(state.iterations());
  state.SetBytesProcessed(bytes * runs);
  state.counters["per_image_byte"] =
      benchmark::Counter(static_cast<double>(device.image_bytes * runs),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

}  // namespace
}  // namespace fliglaf

int main(int argc, char** argv) {
  const auto catalogue = fliglaf::DeviceCatalogue::BuiltIn();
  for (const fliglaf::DeviceProfile& device : catalogue.all()) {
    if (device.config_words > 0) continue;  // no memory to program
    const std::string name = "BM_ProgramWithVerify/" + device.name;
    benchmark::RegisterBenchmark(name.c_str(), fliglaf::ProgramWithVerify, device)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
