// Prints the faults of the simulated bench for docs/faults.md.
#include <cstdio>

#include "simulator/bench/fault_option.h"

int main() { std::printf("```\n%s\n```\n", fliglaf::simulator::FaultHelp().c_str()); }
