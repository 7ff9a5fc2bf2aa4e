#include "cli/commands/table.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <fmt/format.h>

#include "cli/parse_options.h"
#include "cli/usage_error.h"
#include "shared/utf8.h"

namespace fliglaf::cli {
namespace {

constexpr std::array kRows{MakeDevices,   MakeProgram, MakeRead,   MakeVerify, MakeCompare,
                           MakeBlank,     MakeErase,   MakeLock,   MakeConfig, MakeFuses,
                           MakeSignature, MakeChip,    MakeReplay, MakeHelp};

}  // namespace

Commands MakeCommands() {
  Commands commands;
  for (const auto& make : kRows) {
    if (auto command = make()) commands.push_back(std::move(command));
  }
  return commands;
}

Command& FindCommand(const Commands& commands, const std::string& name) {
  const auto found = std::ranges::find(commands, name, &Command::name);
  if (found != commands.end()) return **found;
  std::vector<std::string_view> names;
  for (const auto& command : commands) names.push_back(command->name());
  throw UsageError(fmt::format("unknown command \"{}\"{}", Excerpt(name), DidYouMean(name, names)),
                   SeeHelp({}));
}

}  // namespace fliglaf::cli
