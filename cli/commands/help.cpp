// fliglaf help: what the program and its commands take.
#include <iostream>

#include "cli/commands/table.h"
#include "cli/help_text.h"
#include "cli/layout.h"

namespace fliglaf::cli {
namespace {

class HelpCommand : public Command {
 public:
  HelpCommand()
      : Command({.name = "help",
                 .summary = "Show this help, or that of a command",
                 .example = "help program"}) {}

  void Describe(OptionSet& options) override {
    options.Text("COMMAND", "COMMAND", "The command; without it all of them are listed", command_);
  }

  ExitStatus Run() override {
    const int width = ColumnsOf(platform::Stream::kOutput);
    const Commands commands = MakeCommands();
    std::cout << (command_.empty() ? HelpOfProgram(commands, width)
                                   : HelpOfCommand(FindCommand(commands, command_), width));
    return ExitStatus::kSuccess;
  }

 private:
  std::string command_;
};

}  // namespace

std::unique_ptr<Command> MakeHelp() { return std::make_unique<HelpCommand>(); }

}  // namespace fliglaf::cli
