// What a queued register write costs on its way to a programmer that only counts.
#include <benchmark/benchmark.h>

#include "benchmarks/counting_sink.h"
#include "usb/components/forwarding_programmer.h"

namespace fliglaf {
namespace {

/// The plain virtual call to measure against.
class Plain {
 public:
  virtual ~Plain() = default;
  virtual std::int32_t Call(std::int32_t value, std::uint8_t number) = 0;
};

class PlainSink : public Plain {
 public:
  [[gnu::noinline]] std::int32_t Call(std::int32_t value, std::uint8_t number) override {
    sum += value + number;
    return 0;
  }
  std::int64_t sum = 0;
};

void BM_PlainVirtualCall(benchmark::State& state) {
  PlainSink sink;
  Plain* plain = &sink;
  for (auto _ : state) {
    benchmark::DoNotOptimize(plain);  // keeps the call a virtual one
    plain->Call(1, reg::kCapture);
  }
  benchmark::DoNotOptimize(sink.sum);
}
BENCHMARK(BM_PlainVirtualCall);

void BM_QueuedRegisterWrite(benchmark::State& state) {
  CountingSink sink;
  Programmer* programmer = &sink;
  for (auto _ : state) {
    benchmark::DoNotOptimize(programmer);
    programmer->QueueRegisterWrite(1, reg::kCapture);
  }
  benchmark::DoNotOptimize(sink.sum);
}
BENCHMARK(BM_QueuedRegisterWrite);

void BM_QueuedRegisterWriteThroughADecorator(benchmark::State& state) {
  CountingSink sink;
  ForwardingProgrammer decorator(sink);
  Programmer* programmer = &decorator;
  for (auto _ : state) {
    benchmark::DoNotOptimize(programmer);
    programmer->QueueRegisterWrite(1, reg::kCapture);
  }
  benchmark::DoNotOptimize(sink.sum);
}
BENCHMARK(BM_QueuedRegisterWriteThroughADecorator);

}  // namespace
}  // namespace fliglaf
