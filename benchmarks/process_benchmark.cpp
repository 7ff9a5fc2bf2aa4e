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

namespace {

/// Runs the program and waits; the result is what the system accounted for it.
rusage RunProgram(const std::vector<std::string>& arguments) {
  const pid_t child = fork();
  if (child == 0) {
    std::vector<char*> argv{const_cast<char*>(FLIGLAF_PROGRAM)};
    for (const std::string& argument : arguments)
      argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    if (std::freopen("/dev/null", "w", stdout) == nullptr) _exit(127);
    execv(FLIGLAF_PROGRAM, argv.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) std::abort();
  return usage;
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

void Measure(benchmark::State& state, const std::vector<std::string>& arguments) {
  double memory = 0;
  for (auto _ : state) {
    const rusage usage = RunProgram(arguments);
    state.SetIterationTime(Seconds(usage.ru_utime) + Seconds(usage.ru_stime));
    memory = std::max(memory, static_cast<double>(usage.ru_maxrss) / 1024);
  }
  state.counters["peak_MiB"] = memory;
}

std::string RandomImage(std::size_t bytes) {
  const auto file = std::filesystem::temp_directory_path() /
                    ("fliglaf-benchmark-" + std::to_string(getpid()) + ".bin");
  std::mt19937 random(1);
  std::string contents(bytes, '\0');
  for (char& byte : contents) byte = static_cast<char>(random());
  std::ofstream(file, std::ios::binary) << contents;
  return file.string();
}

void BM_Devices(benchmark::State& state) { Measure(state, {"devices"}); }
BENCHMARK(BM_Devices)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_ProgramWithVerify8KiB(benchmark::State& state) {
  const std::string image = RandomImage(8192);
  Measure(state, {"program", "isp51-8k", image, "--no-erase", "--progress", "none"});
  std::filesystem::remove(image);
}
BENCHMARK(BM_ProgramWithVerify8KiB)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_EraseProgramWithVerify8KiB(benchmark::State& state) {
  const std::string image = RandomImage(8192);
  Measure(state, {"program", "isp51-8k", image, "--progress", "none"});
  std::filesystem::remove(image);
}
BENCHMARK(BM_EraseProgramWithVerify8KiB)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
