// The simulated chip on a port of this machine.
#include "cli/chip_command.h"

#include <iostream>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli/attempt.h"
#include "cli/chip_file_option.h"
#include "cli/loopback_port.h"
#include "cli/report.h"
#include "cli/usage_error.h"
#include "platform/terminal.h"
#include "simulator/bench/simulated_bench.h"
#include "simulator/remote_bitbang.h"

namespace fliglaf::cli {
namespace {

/// Serves one client to its end. Throws UnknownRequest.
void Serve(LoopbackPort& port, simulator::JtagCable& cable) {
  if (!port.Accept()) return;
  simulator::RemoteBitbang protocol(cable);
  std::string answers;
  while (!protocol.quit()) {
    const std::string_view requests = port.Receive();
    if (requests.empty()) return;
    answers.clear();
    protocol.Take(requests, answers);
    if (!port.Send(answers)) return;
  }
}

ExitStatus RunChipCommand(const Options& options, const DeviceProfile& device) {
  simulator::SimulatedBench bench(device, 0, {.faults = {}});
  const auto cable = bench.bench().AttachJtagCable();
  if (cable == nullptr) {
    throw UsageError(fmt::format(
        "{}: family {} has no JTAG lines; must be a device of families 4 to 11, as \"fliglaf "
        "devices\" lists them",
        device.name, device.family));
  }
  LoopbackPort port(static_cast<std::uint16_t>(options.remote_bitbang_port));
  UseChipFile(bench, options);
  std::cout << fmt::format("{}: remote_bitbang on 127.0.0.1 port {}\n", device.name, port.number());
  if (!std::cout.flush())
    throw UsageError("standard output cannot be written: nobody learns the port");
  ExitStatus status = ExitStatus::kSuccess;
  try {
    Serve(port, *cable);
    if (platform::StopRequested()) status = ExitStatus::kStopped;
  } catch (const simulator::UnknownRequest& error) {
    PrintProblem(fmt::format("{}: {}", device.name, error.what()));
    status = ExitStatus::kProgrammer;
  }
  std::vector<std::string> problems;
  Attempt(problems, [&bench] { bench.KeepChip(); });
  for (const std::string& problem : problems) PrintProblem(problem);
  return problems.empty() || status != ExitStatus::kSuccess ? status : ExitStatus::kUnwritten;
}

}  // namespace

ChipCommand FindChipCommand() { return RunChipCommand; }

}  // namespace fliglaf::cli
