#include "cli/report.h"

#include <iostream>

#include <nlohmann/json.hpp>

namespace fliglaf::cli {
namespace {

void PrintJson(const Options& options, const Report& report) {
  nlohmann::ordered_json object{{"command", options.command_name},
                                {"device", options.device},
                                {"status", static_cast<int>(report.status)},
                                {"message", report.message},
                                {"result", report.result},
                                {"seconds", nullptr},
                                {"bytes", report.bytes},
                                {"differences", report.differences},
                                {"log", report.log}};
  if (report.seconds) object["seconds"] = *report.seconds;
  std::cout << object.dump(2) << "\n";
}

}  // namespace

void PrintReport(const Options& options, const Report& report) {
  if (options.json) return PrintJson(options, report);
  std::cout << report.log << std::flush;
  if (report.status == ExitStatus::kSuccess) {
    std::cout << report.message << "\n";
  } else {
    std::cerr << "fliglaf: " << report.message << "\n";
  }
}

}  // namespace fliglaf::cli
