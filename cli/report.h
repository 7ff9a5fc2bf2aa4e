#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/exit_status.h"
#include "cli/options.h"

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
};

/// Prints it: the log as the library wrote it and the sentence, or one JSON object.
void PrintReport(const Options& options, const Report& report);

}  // namespace fliglaf::cli
