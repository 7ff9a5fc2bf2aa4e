// What whole calls of the command line cost: CPU time and peak memory as the system accounts them.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/child_process.h"

namespace {

std::string RandomImage(std::size_t bytes) {
  const auto file = TemporaryFile("bin");
  std::mt19937 random(1);
  std::string contents(bytes, '\0');
  for (char& byte : contents) byte = static_cast<char>(random());
  std::ofstream(file, std::ios::binary) << contents;
  return file.string();
}

void BM_Devices(benchmark::State& state) { MeasureChild(state, {"devices"}); }
BENCHMARK(BM_Devices)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_ProgramWithVerify8KiB(benchmark::State& state) {
  const std::string image = RandomImage(8192);
  MeasureChild(state, {"program", "isp51-8k", image, "--no-erase", "--progress", "none"});
  std::filesystem::remove(image);
}
BENCHMARK(BM_ProgramWithVerify8KiB)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_EraseProgramWithVerify8KiB(benchmark::State& state) {
  const std::string image = RandomImage(8192);
  MeasureChild(state, {"program", "isp51-8k", image, "--progress", "none"});
  std::filesystem::remove(image);
}
BENCHMARK(BM_EraseProgramWithVerify8KiB)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_ProgramWithVerify128KiB(benchmark::State& state) {
  const std::string image = RandomImage(131'072);
  MeasureChild(state, {"program", "jtag-page-128k", image, "--no-erase", "--progress", "none"});
  std::filesystem::remove(image);
}
BENCHMARK(BM_ProgramWithVerify128KiB)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
