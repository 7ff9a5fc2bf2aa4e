// fliglaf chip: the simulated chip on a port of this machine.
#include <iostream>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli/attempt.h"
#include "cli/chip_file_option.h"
#include "cli/commands/table.h"
#include "cli/loopback_port.h"
#include "cli/operation_options.h"
#include "cli/report.h"
#include "cli/usage_error.h"
#include "platform/terminal.h"
#include "simulator/bench/simulated_bench.h"
#include "simulator/remote_bitbang.h"

namespace fliglaf::cli {
namespace {

constexpr int kLastPort = 65535;

/// Serves one client to its end. Throws UnknownRequest.
void ServeClient(LoopbackPort& port, simulator::JtagCable& cable) {
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

ExitStatus Serve(LoopbackPort& port, simulator::JtagCable& cable, const std::string& device) {
  try {
    ServeClient(port, cable);
    return platform::StopRequested() ? ExitStatus::kStopped : ExitStatus::kSuccess;
  } catch (const simulator::UnknownRequest& error) {
    PrintProblem(fmt::format("{}: {}", device, error.what()));
    return ExitStatus::kProgrammer;
  }
}

class ChipCommand : public Command {
 public:
  ChipCommand()
      : Command({.name = "chip",
                 .summary = "Offer the simulated chip to another JTAG tool",
                 .example = "chip jtag-byte-16k --remote-bitbang 9824 --chip bench.chip"}) {}

  void Describe(OptionSet& options) override {
    device_.AddDevice(options, "chip: name the device");
    options
        .Number("--remote-bitbang", "PORT",
                "Port of this machine on which one client, such as OpenOCD, is served in the "
                "remote_bitbang protocol; 0 takes a free one. The program ends with the client",
                port_, 0, kLastPort)
        .when_missing = "chip: name the port with --remote-bitbang PORT";
    device_.AddFolders(options);
    AddChipFile(options, chip_file_);
  }

  ExitStatus Run() override {
    const DeviceProfile& device = device_.Find();
    simulator::SimulatedBench bench(device, 0, {.faults = {}});
    const auto cable = bench.bench().AttachJtagCable();
    if (cable == nullptr) {
      throw UsageError(
          fmt::format("{}: family {} has no JTAG lines; choose a device of families 4 to 11 from "
                      "\"fliglaf devices\"",
                      device.name, device.family));
    }
    LoopbackPort port(static_cast<std::uint16_t>(port_));
    UseChipFile(bench, chip_file_, MissingChipFile::kCreate, device.name);
    std::cout << fmt::format("{}: remote_bitbang on 127.0.0.1 port {}\n", device.name,
                             port.number());
    if (!std::cout.flush()) {
      throw UsageError("standard output: cannot be written, so no client would learn the port");
    }
    return Keep(bench, Serve(port, *cable, device.name));
  }

 private:
  static ExitStatus Keep(simulator::SimulatedBench& bench, ExitStatus status) {
    std::vector<std::string> problems;
    Attempt(problems, [&bench] { bench.KeepChip(); });
    for (const std::string& problem : problems) PrintProblem(problem);
    return problems.empty() || status != ExitStatus::kSuccess ? status : ExitStatus::kUnwritten;
  }

  DeviceOptions device_;
  int port_ = 0;
  std::filesystem::path chip_file_;
};

}  // namespace

std::unique_ptr<Command> MakeChip() { return std::make_unique<ChipCommand>(); }

}  // namespace fliglaf::cli
