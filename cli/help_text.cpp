#include "cli/help_text.h"

#include <vector>

#include <fmt/format.h>

#include "cli/layout.h"

namespace fliglaf::cli {
namespace {

constexpr int kIndent = 2;
/// Options with a longer name and value have their text on lines of their own.
constexpr int kWidestOption = 22;

constexpr const char* kArguments = "Arguments";
constexpr const char* kOptions = "Options";

std::string NameAndValue(const Option& option) {
  std::string text = option.names;
  if (const auto comma = text.find(','); comma != std::string::npos) text.insert(comma + 1, " ");
  if (!option.is_argument() && !option.value.empty()) text += " " + option.value;
  return text;
}

std::string UsageOf(const Command& command, const OptionSet& options) {
  std::string line = "Usage: fliglaf " + command.name();
  for (const Option& option : options.all()) {
    const std::string word = NameAndValue(option) + (option.repeats ? "..." : "");
    if (option.required || !option.when_missing.empty()) {
      line += " " + word;
    } else if (option.is_argument()) {
      line += " [" + word + "]";
    }
  }
  return line + " [OPTION...]";
}

/// The rows of each heading, in the order in which they are shown.
std::vector<std::pair<std::string, std::vector<Row>>> Groups(const OptionSet& options) {
  std::vector<std::pair<std::string, std::vector<Row>>> groups{
      {kArguments, {}}, {kOptions, {{"-h, --help", "Show this help"}}}};
  for (const Option& option : options.all()) {
    const std::string& heading = option.is_argument()   ? kArguments
                                 : option.group.empty() ? kOptions
                                                        : option.group;
    auto group = groups.begin();
    while (group != groups.end() && group->first != heading) ++group;
    if (group == groups.end()) group = groups.insert(group, {heading, {}});
    group->second.push_back({NameAndValue(option), option.help});
  }
  groups.insert(groups.end(), options.explained().begin(), options.explained().end());
  return groups;
}

}  // namespace

std::string HelpOfProgram(std::span<const std::unique_ptr<Command>> commands, int width) {
  std::vector<Row> rows;
  for (const auto& command : commands) rows.push_back({command->name(), command->help().summary});
  const std::vector<Row> endings{
      {"0", "success"},
      {"1", "the device differs, or the operation failed on it"},
      {"2", "wrong use or a bad file; nothing was done to the device"},
      {"3", "the programmer could not be used"},
      {"4", "done on the device, but a file or a report could not be written"},
      {"130", "stopped"}};
  return Wrapped("Usage: fliglaf COMMAND [ARGUMENT...] [OPTION...]", width) + "\n" +
         Wrapped("Programs, reads and checks microcontrollers.", width) + "\nCommands:\n" +
         Table(rows, width, kIndent) + "\n" +
         Wrapped(
             "\"fliglaf help COMMAND\" shows the options of a command, \"fliglaf --version\" "
             "the version.",
             width) +
         "\nExit status:\n" + Table(endings, width, kIndent);
}

std::string HelpOfCommand(Command& command, int width) {
  OptionSet options;
  command.Describe(options);
  std::string text = Wrapped(UsageOf(command, options), width) + "\n" +
                     Wrapped(command.help().summary + ".", width);
  for (const auto& [heading, rows] : Groups(options)) {
    if (!rows.empty()) text += "\n" + heading + ":\n" + Table(rows, width, kIndent, kWidestOption);
  }
  return text + "\nExample:\n" + Wrapped("fliglaf " + command.help().example, width, kIndent);
}

std::string VersionLine() { return "fliglaf " FLIGLAF_VERSION "\n"; }

}  // namespace fliglaf::cli
