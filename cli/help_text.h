#pragma once

#include <memory>
#include <span>
#include <string>

#include "cli/command.h"

namespace fliglaf::cli {

/// What "fliglaf help" prints, in lines of at most `width` columns.
[[nodiscard]] std::string HelpOfProgram(std::span<const std::unique_ptr<Command>> commands,
                                        int width);

/// What "fliglaf help COMMAND" prints.
[[nodiscard]] std::string HelpOfCommand(Command& command, int width);

/// "fliglaf 1.2.3"
[[nodiscard]] std::string VersionLine();

}  // namespace fliglaf::cli
