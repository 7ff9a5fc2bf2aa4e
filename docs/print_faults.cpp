// Prints the faults of the simulated bench for docs/faults.md.
#include <cstdio>

#include "simulator/bench/fault_option.h"

int main() {
  std::puts("| Fault | Effect |\n|---|---|");
  for (const auto& [usage, meaning] : fliglaf::simulator::FaultHelps()) {
    std::printf("| `%s` | %s |\n", usage.c_str(), meaning.c_str());
  }
}
