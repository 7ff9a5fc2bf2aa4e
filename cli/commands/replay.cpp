// fliglaf replay: plays run records back.
#include "replay/replay.h"

#include <iostream>

#include "cli/commands/table.h"

namespace fliglaf::cli {
namespace {

class ReplayCommand : public Command {
 public:
  ReplayCommand()
      : Command({.name = "replay",
                 .summary = "Play run records back, without a programmer or a chip",
                 .example = "replay failure.run --explain"}) {}

  void Describe(OptionSet& options) override {
    options.Paths("FILE", "FILE", "Record, as --record writes it", records_).when_missing =
        "replay: name at least one record";
    options.Flag("--explain",
                 "At a difference, show the calls before it and where in the run it is", explain_);
  }

  /// The exit statuses of a replay are those of the program: 0 agrees, 1 differs, 2 unreadable.
  ExitStatus Run() override {
    return static_cast<ExitStatus>(
        record::Replay(records_, {.explain = explain_}, std::cout, std::cerr));
  }

 private:
  std::vector<std::filesystem::path> records_;
  bool explain_ = false;
};

}  // namespace

std::unique_ptr<Command> MakeReplay() { return std::make_unique<ReplayCommand>(); }

}  // namespace fliglaf::cli
