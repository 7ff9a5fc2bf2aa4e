// The library's own time: a program and a read of a device of every family, against the bare calls
// that it makes of the programmer, and against the time that the run takes on the wire. One row a
// device and operation; the smallest of several alternated measurements of each.
#include <algorithm>
#include <cstdio>
#include <map>
#include <random>
#include <time.h>

#include "benchmarks/tape.h"
#include "cli/host_session.h"
#include "devices/catalogue/device_catalogue.h"
#include "devices/kinds/device_kind.h"
#include "host/cls_mpu.h"
#include "platform/portable/portable_desktop.h"
#include "simulator/bench/simulated_bench.h"
#include "usb/request/operation.h"

namespace fliglaf {
namespace {

constexpr int kRounds = 15;

double CpuSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

template <typename Work>
void MeasureLeast(double& least, const Work& work) {
  const double start = CpuSeconds();
  work();
  least = std::min(least, CpuSeconds() - start);
}

/// A transfer that is complete at once leaves nothing to wait for.
class StoppedClock : public platform::TimeSource {
 public:
  [[nodiscard]] std::int64_t Now() const override { return 0; }
  [[nodiscard]] std::optional<std::int64_t> NextEvent() const override { return 0; }
  void WaitUntil(std::int64_t) override {}
};

class Measurement {
 public:
  Measurement(const DeviceProfile& device, cli::Engine engine)
      : device_(device),
        engine_(engine),
        session_(cli::HostSession::FreeInstance(), device, engine),
        bench_(device, session_.instance(),
               {.faults = {}, .parallel = engine == cli::Engine::kParallel}),
        desktop_(bench_.bench()) {
    std::mt19937 random(1);
    for (std::uint8_t& byte : session_.image()) byte = static_cast<std::uint8_t>(random());
  }

  /// False when the run on the bench failed.
  bool Print(const char* name, std::uint8_t code) {
    Tape tape;
    TapeWriter writer(bench_.programmer(), tape);
    const std::int64_t start = bench_.bench().Now();
    if (!Run(writer, code)) return false;
    writer.TakeBlock();
    const double wire = static_cast<double>(bench_.bench().Now() - start) * 1e-9;

    TapeSink sink(tape);
    StoppedClock stopped;
    platform::PortableDesktop desktop(stopped);
    Library library(sink, desktop);
    clsMPU object(library);
    session_.Open(object);
    double own = 1e9;
    double bare = 1e9;
    for (int round = 0; round < kRounds; ++round) {
      sink.Rewind();
      session_.Request(std::span(&code, 1));
      MeasureLeast(own, [&] { session_.Run(object); });
      sink.Rewind();
      MeasureLeast(bare, [&] { TapeSink::Play(tape, sink); });
    }
    std::printf("%2d  %-24s %-9s %-8s %9zu %10.3f %10.3f %8.2f %12.1f %9.4f\n", device_.family,
                device_.name.c_str(), engine_ == cli::Engine::kUsb ? "USB" : "parallel", name,
                tape.calls.size(), own * 1e3, bare * 1e3, own / bare, wire * 1e3, 100 * own / wire);
    return true;
  }

 private:
  bool Run(Programmer& programmer, std::uint8_t code) {
    Library library(programmer, desktop_);
    clsMPU object(library);
    session_.Request(std::span(&code, 1));
    session_.Open(object);
    session_.Run(object);
    return session_.result() == 0;
  }

  const DeviceProfile& device_;
  cli::Engine engine_;
  cli::HostSession session_;
  simulator::SimulatedBench bench_;
  platform::PortableDesktop desktop_;
};

/// The largest device of each family: what is sent besides its bytes counts for least.
std::map<int, const DeviceProfile*> LargestOfFamilies(const DeviceCatalogue& catalogue) {
  std::map<int, const DeviceProfile*> largest;
  for (const DeviceProfile& device : catalogue.all()) {
    if (device.config_words > 0) continue;
    const DeviceProfile*& known = largest[device.family];
    if (known == nullptr || device.image_bytes > known->image_bytes) known = &device;
  }
  return largest;
}

bool MeasureAll() {
  const DeviceCatalogue catalogue = DeviceCatalogue::BuiltIn();
  std::puts(
      "family  device           engine    operation    calls     own ms    bare ms  own/bare"
      "      wire ms  own % wire");
  bool good = true;
  const auto measure = [&good](const DeviceProfile& device, cli::Engine engine) {
    Measurement measurement(device, engine);
    good = measurement.Print("program", operation::kProgram) &&
           measurement.Print("read", operation::kRead) && good;
  };
  for (const auto& [family, device] : LargestOfFamilies(catalogue)) {
    measure(*device, cli::Engine::kUsb);
    if (RunsOverParallelPort(*device)) measure(*device, cli::Engine::kParallel);
  }
  return good;
}

}  // namespace
}  // namespace fliglaf

int main() {
  if (fliglaf::MeasureAll()) return 0;
  std::fputs("a run on the bench failed\n", stderr);
  return 1;
}
