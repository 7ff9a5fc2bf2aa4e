#pragma once

#include <string>

#include "cli/exit_status.h"
#include "cli/option_set.h"

namespace fliglaf::cli {

/// A command of the program: its options, its help and what it runs. It runs once.
class Command {
 public:
  struct Help {
    std::string name;
    std::string summary;  ///< one sentence, without its full stop
    std::string example;  ///< what follows "fliglaf "
  };
  explicit Command(Help help) : help_(std::move(help)) {}
  virtual ~Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  [[nodiscard]] const Help& help() const { return help_; }
  [[nodiscard]] const std::string& name() const { return help_.name; }

  /// Adds what the command takes, to be filled into the command itself.
  virtual void Describe(OptionSet& options) = 0;
  /// Runs with the options as they were filled in. Throws UsageError, ImageError, BenchError,
  /// ProfileError and Stopped before anything is done to a device.
  virtual ExitStatus Run() = 0;

 private:
  Help help_;
};

}  // namespace fliglaf::cli
