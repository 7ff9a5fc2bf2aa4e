#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "cli/exit_status.h"
#include "cli/operation_options.h"

namespace fliglaf::cli {

/// How an operation of the command line ended.
struct Report {
  ExitStatus status = ExitStatus::kSuccess;
  /// One sentence for the user.
  std::string message;
  /// quorinprgresult(0).
  int result = 0;
  std::string log;
  /// None when the run was not carried to its end.
  std::optional<double> seconds;
  /// Bytes that came from a file or went to one.
  std::size_t bytes = 0;
  int differences = 0;
  /// The device has another signature than expected, and the user went on all the same.
  bool signature_ignored = false;
  /// Files that could not be written after the run: "FILE: reason".
  std::vector<std::string> unwritten;
};

/// Prints it: the log as the library wrote it and the sentence, or one JSON object. Returns how the
/// program ends: a success of which a file could not be written is kUnwritten.
ExitStatus PrintReport(const OperationOptions& options, const Report& report);

/// The end of a command that has printed its result itself: what could not be written.
ExitStatus PrintUnwritten(const Report& report);

/// JSON as it is printed, in ASCII, so that no terminal obeys what stands in it; what is not UTF-8 is
/// replaced.
[[nodiscard]] std::string Dump(const nlohmann::ordered_json& object);

/// "1 byte", "2 bytes"
[[nodiscard]] std::string ByteCount(std::size_t count);

/// Prints one line about the program's own affairs on standard error, and `see` below it. Control
/// characters, such as those of a file's name, are shown as U+FFFD.
void PrintProblem(std::string_view problem, std::string_view see = {});

}  // namespace fliglaf::cli
