// The command-line host.
#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "cli/commands/table.h"
#include "cli/exit_status.h"
#include "cli/help_text.h"
#include "cli/layout.h"
#include "cli/named_files.h"
#include "cli/parse_options.h"
#include "cli/report.h"
#include "cli/usage_error.h"
#include "devices/profile_error.h"
#include "images/whole_file.h"
#include "platform/terminal.h"
#include "shared/utf8.h"
#include "simulator/bench/bench_error.h"

namespace fliglaf::cli {
namespace {

using Words = std::span<const std::string>;

/// Whether a command takes an option of this name.
bool IsKnown(const Commands& commands, std::string_view name) {
  for (const auto& command : commands) {
    OptionSet options;
    command->Describe(options);
    if (options.Find(name) != nullptr) return true;
  }
  return false;
}

/// An option in the place of the command.
[[noreturn]] void RefuseOption(const Commands& commands, Words words) {
  const std::string name = words[0].substr(0, words[0].find('='));
  std::string command = "COMMAND";
  for (const auto& known : commands) {
    if (std::ranges::find(words, known->name()) != words.end()) command = known->name();
  }
  if (IsKnown(commands, name)) {
    throw UsageError(
        fmt::format("{} belongs after the command: fliglaf {} ... {}", name, command, name),
        SeeHelp(command == "COMMAND" ? "" : command));
  }
  constexpr std::array<std::string_view, 2> kOptions{"--version", "--help"};
  throw UsageError(fmt::format("unknown option {}{}", Excerpt(name), DidYouMean(name, kOptions)),
                   SeeHelp({}));
}

ExitStatus RunCommand(Command& command, Words words) {
  OptionSet options;
  command.Describe(options);
  if (!ParseOptions(command.name(), options, words)) {
    std::cout << HelpOfCommand(command, ColumnsOf(platform::Stream::kOutput));
    return ExitStatus::kSuccess;
  }
  CheckNamedFiles(options);
  return command.Run();
}

ExitStatus Run(Words words) {
  const Commands commands = MakeCommands();
  if (words.empty()) {
    std::cerr << HelpOfProgram(commands, ColumnsOf(platform::Stream::kError));
    return ExitStatus::kUsage;
  }
  const std::string& first = words[0];
  if (first == "-V" || first == "--version") {
    std::cout << VersionLine();
  } else if (first == "-h" || first == "--help") {
    std::cout << HelpOfProgram(commands, ColumnsOf(platform::Stream::kOutput));
  } else if (first.starts_with('-')) {
    RefuseOption(commands, words);
  } else {
    return RunCommand(FindCommand(commands, first), words.subspan(1));
  }
  return ExitStatus::kSuccess;
}

ExitStatus Main(Words words) {
  const auto end = [](ExitStatus status, std::string_view problem, std::string_view see = {}) {
    PrintProblem(problem, see);
    return status;
  };
  try {
    const ExitStatus status = Run(words);
    if (std::cout.flush()) return status;
    return end(status == ExitStatus::kSuccess ? ExitStatus::kUnwritten : status,
               "standard output: cannot be written");
  } catch (const platform::Stopped& stopped) {
    return end(ExitStatus::kStopped, stopped.what());
  } catch (const UsageError& error) {
    return end(ExitStatus::kUsage, error.what(), error.see());
  } catch (const simulator::BenchError& error) {
    return end(ExitStatus::kUsage, error.what());
  } catch (const ImageError& error) {
    return end(ExitStatus::kUsage, error.what());
  } catch (const ProfileError& error) {
    return end(ExitStatus::kUsage, error.what());
  } catch (const std::exception& error) {
    return end(ExitStatus::kProgrammer, fmt::format("internal error: {}", error.what()));
  }
}

}  // namespace
}  // namespace fliglaf::cli

int main(int argc, char** argv) {
  fliglaf::platform::OpenStandardStreams();
  const fliglaf::platform::Utf8Console console;
  const fliglaf::platform::Utf8Arguments arguments(argc, argv);
  const char* const* const values = arguments.values();
  const std::vector<std::string> words(values + (argc > 0 ? 1 : 0), values + arguments.count());
  return static_cast<int>(fliglaf::cli::Main(words));
}
