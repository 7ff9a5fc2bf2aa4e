// Whole calls of the program, accounted for by the system.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

/// Runs the program and waits; the result is what the system accounted for it.
inline rusage RunProgram(const std::vector<std::string>& arguments) {
  const pid_t child = fork();
  if (child == 0) {
    std::vector<char*> argv{const_cast<char*>(FLIGLAF_PROGRAM)};
    for (const std::string& argument : arguments) {
      argv.push_back(const_cast<char*>(argument.c_str()));
    }
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

inline double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Counts the child's CPU time, user and system, as the benchmark's; peak_MiB is its peak memory.
inline void MeasureChild(benchmark::State& state, const std::vector<std::string>& arguments) {
  double memory = 0;
  for (auto _ : state) {
    const rusage usage = RunProgram(arguments);
    state.SetIterationTime(Seconds(usage.ru_utime) + Seconds(usage.ru_stime));
    memory = std::max(memory, static_cast<double>(usage.ru_maxrss) / 1024);
  }
  state.counters["peak_MiB"] = memory;
}

inline std::filesystem::path TemporaryFile(const std::string& ending) {
  return std::filesystem::temp_directory_path() /
         ("fliglaf-benchmark-" + std::to_string(getpid()) + "." + ending);
}
