// What an element of a shared variable costs, with its range check, against one of a plain array.
#include <array>

#include <benchmark/benchmark.h>

#include "shared/shared_variables.h"

namespace fliglaf {
namespace {

constexpr std::int32_t kBytes = 16'384;

/// The blocks of an instance that nobody else has.
class Blocks {
 public:
  Blocks() {
    const auto fail = [] { throw std::runtime_error("a shared memory block cannot be created"); };
    vars.OpenMainGroup(clsMemMapped().findnum(), fail);
    vars.OpenDataBuffers(kBytes, fail);
  }
  SharedVariables vars;
};

/// Adds up kBytes elements and writes each again.
template <class Bytes>
void AddUp(benchmark::State& state, Bytes& bytes) {
  for (auto _ : state) {
    std::uint32_t sum = 0;
    for (std::int32_t i = 0; i < kBytes; ++i) {
      sum += bytes[i];
      bytes[i] = static_cast<std::uint8_t>(sum);
    }
    benchmark::DoNotOptimize(sum);
    benchmark::ClobberMemory();
  }
  state.counters["per_element"] =
      benchmark::Counter(kBytes * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// std::array checks nothing and takes unsigned indexes.
struct PlainBytes {
  std::array<std::uint8_t, kBytes> bytes{};
  std::uint8_t& operator[](std::int32_t index) { return bytes[static_cast<std::size_t>(index)]; }
};

void BM_PlainArray(benchmark::State& state) {
  PlainBytes bytes;
  AddUp(state, bytes);
}
BENCHMARK(BM_PlainArray);

void BM_DataBuffer(benchmark::State& state) {
  Blocks blocks;
  AddUp(state, blocks.vars.quorinibuffer);
}
BENCHMARK(BM_DataBuffer);

/// A line of the log is a new text in the place of the old one.
void BM_AppendALineToTheLog(benchmark::State& state) {
  Blocks blocks;
  for (auto _ : state) {
    if (blocks.vars.quorinMainRtstr[0].size() > 500) blocks.vars.quorinMainRtstr.Set(0, u"");
    blocks.vars.quorinMainRtstr.Append(0, u">>Program ok\n");
  }
  blocks.vars.EmptyTexts();
}
BENCHMARK(BM_AppendALineToTheLog);

void BM_OpenAndReleaseTheMainGroup(benchmark::State& state) {
  for (auto _ : state) Blocks blocks;
}
BENCHMARK(BM_OpenAndReleaseTheMainGroup)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace fliglaf
