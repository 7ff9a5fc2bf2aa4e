#include "cli/report.h"

#include <iostream>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "shared/utf8.h"

namespace fliglaf::cli {
namespace {

/// How the program ends: a success of which something could not be written is kUnwritten.
ExitStatus StatusOf(const Report& report) {
  const bool done = report.status == ExitStatus::kSuccess;
  return done && !report.unwritten.empty() ? ExitStatus::kUnwritten : report.status;
}

std::string OneLine(std::string_view text) { return Excerpt(text, std::string_view::npos); }

void PrintJson(const OperationOptions& options, const Report& report) {
  std::string message = report.message;
  for (const std::string& problem : report.unwritten) {
    message += (message.empty() ? "" : "; ") + problem;
  }
  nlohmann::ordered_json object{{"command", options.command},
                                {"device", options.device.name()},
                                {"status", static_cast<int>(StatusOf(report))},
                                {"message", message},
                                {"result", report.result},
                                {"seconds", nullptr},
                                {"bytes", report.bytes},
                                {"differences", report.differences},
                                {"log", report.log}};
  if (report.seconds) object["seconds"] = *report.seconds;
  std::cout << Dump(object) << "\n";
}

void PrintText(const Report& report) {
  std::cout << Printable(report.log) << std::flush;
  if (report.status == ExitStatus::kSuccess) {
    std::cout << OneLine(report.message) << "\n";
  } else {
    PrintProblem(report.message);
  }
  PrintUnwritten(report);
}

}  // namespace

std::string Dump(const nlohmann::ordered_json& object) {
  return object.dump(2, ' ', true, nlohmann::ordered_json::error_handler_t::replace);
}

ExitStatus PrintReport(const OperationOptions& options, const Report& report) {
  if (options.json) {
    PrintJson(options, report);
  } else {
    PrintText(report);
  }
  return StatusOf(report);
}

ExitStatus PrintUnwritten(const Report& report) {
  for (const std::string& problem : report.unwritten) PrintProblem(problem);
  return StatusOf(report);
}

std::string ByteCount(std::size_t count) {
  return fmt::format("{} byte{}", count, count == 1 ? "" : "s");
}

void PrintProblem(std::string_view problem, std::string_view see) {
  std::cerr << fmt::format("fliglaf: {}\n{}{}", OneLine(problem), see, see.empty() ? "" : "\n");
}

}  // namespace fliglaf::cli
