// The commands of the program. A new one is a file here, its line below and its row in table.cpp.
#pragma once

#include <memory>
#include <vector>

#include "cli/command.h"

namespace fliglaf::cli {

[[nodiscard]] std::unique_ptr<Command> MakeBlank();
/// Null where the program cannot serve the chip's lines.
[[nodiscard]] std::unique_ptr<Command> MakeChip();
[[nodiscard]] std::unique_ptr<Command> MakeCompare();
[[nodiscard]] std::unique_ptr<Command> MakeConfig();
[[nodiscard]] std::unique_ptr<Command> MakeDevices();
[[nodiscard]] std::unique_ptr<Command> MakeErase();
[[nodiscard]] std::unique_ptr<Command> MakeFuses();
[[nodiscard]] std::unique_ptr<Command> MakeHelp();
[[nodiscard]] std::unique_ptr<Command> MakeLock();
[[nodiscard]] std::unique_ptr<Command> MakeProgram();
[[nodiscard]] std::unique_ptr<Command> MakeRead();
[[nodiscard]] std::unique_ptr<Command> MakeReplay();
[[nodiscard]] std::unique_ptr<Command> MakeSignature();
[[nodiscard]] std::unique_ptr<Command> MakeVerify();

using Commands = std::vector<std::unique_ptr<Command>>;

/// All of them, in the order of the help.
[[nodiscard]] Commands MakeCommands();

/// Throws UsageError for a name that none of them has.
[[nodiscard]] Command& FindCommand(const Commands& commands, const std::string& name);

}  // namespace fliglaf::cli
