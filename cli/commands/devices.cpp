// fliglaf devices: lists the devices.
#include <iostream>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/commands/table.h"
#include "cli/device_options.h"
#include "cli/layout.h"
#include "cli/report.h"
#include "shared/utf8.h"

namespace fliglaf::cli {
namespace {

void PrintJson(const DeviceCatalogue& catalogue) {
  auto list = nlohmann::ordered_json::array();
  for (const DeviceProfile& device : catalogue.all()) {
    list.push_back({{"name", device.name},
                    {"family", device.family},
                    {"option", device.option},
                    {"size", device.size},
                    {"description", device.description}});
  }
  std::cout << Dump(list) << "\n";
}

void PrintTable(const DeviceCatalogue& catalogue) {
  std::vector<Row> rows;
  for (const DeviceProfile& device : catalogue.all()) {
    rows.push_back(
        {device.name, fmt::format("family {:>2}", device.family), Printable(device.description)});
  }
  std::cout << Table(rows, ColumnsOf(platform::Stream::kOutput));
}

class DevicesCommand : public Command {
 public:
  DevicesCommand()
      : Command({.name = "devices", .summary = "List the devices", .example = "devices --json"}) {}

  void Describe(OptionSet& options) override {
    devices_.AddFolders(options);
    options.Flag("--json", "Print a JSON array", json_);
  }

  ExitStatus Run() override {
    const DeviceCatalogue& catalogue = devices_.Load();
    json_ ? PrintJson(catalogue) : PrintTable(catalogue);
    return ExitStatus::kSuccess;
  }

 private:
  DeviceOptions devices_;
  bool json_ = false;
};

}  // namespace

std::unique_ptr<Command> MakeDevices() { return std::make_unique<DevicesCommand>(); }

}  // namespace fliglaf::cli
