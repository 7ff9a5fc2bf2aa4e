#include "cli/device_list.h"

#include <algorithm>
#include <iostream>
#include <string>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/report.h"

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

}  // namespace

void PrintDevices(const DeviceCatalogue& catalogue, bool json) {
  if (json) return PrintJson(catalogue);
  std::size_t width = 0;
  for (const DeviceProfile& device : catalogue.all()) width = std::max(width, device.name.size());
  std::string table;
  for (const DeviceProfile& device : catalogue.all()) {
    table += fmt::format("{:<{}}  family {:>2}  {}\n", device.name, width, device.family,
                         device.description);
  }
  std::cout << table;
}

}  // namespace fliglaf::cli
