// The simulated chip on a port of this machine.
#include "cli/chip_command.h"

#include <iostream>
#include <string>

#include <fmt/format.h>

#include "cli/loopback_port.h"
#include "cli/simulated_bench.h"
#include "cli/usage_error.h"
#include "platform/terminal.h"
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
  SimulatedBench bench(device, 0, {.chip_file = options.chip_file, .faults = {}});
  const auto cable = bench.bench().AttachJtagCable();
  if (cable == nullptr) {
    throw UsageError(fmt::format(
        "{}: family {} has no JTAG lines; right is a device of families 4 to 11, as \"fliglaf "
        "devices\" lists them",
        device.name, device.family));
  }
  LoopbackPort port(static_cast<std::uint16_t>(options.remote_bitbang_port));
  platform::CatchStopSignals();
  std::cout << fmt::format("{}: remote_bitbang on 127.0.0.1 port {}\n", device.name, port.number())
            << std::flush;
  ExitStatus status = ExitStatus::kSuccess;
  try {
    Serve(port, *cable);
    if (platform::StopRequested()) status = ExitStatus::kStopped;
  } catch (const simulator::UnknownRequest& error) {
    std::cerr << fmt::format("fliglaf: {}: {}\n", device.name, error.what());
    status = ExitStatus::kProgrammer;
  }
  bench.KeepChip();
  return status;
}

}  // namespace

ChipCommand FindChipCommand() { return RunChipCommand; }

}  // namespace fliglaf::cli
