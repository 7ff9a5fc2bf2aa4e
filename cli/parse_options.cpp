#include "cli/parse_options.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "devices/nearest_names.h"
#include "shared/utf8.h"

namespace fliglaf::cli {
namespace {

void Take(const std::string& command, const Option& option, const std::string& word) {
  try {
    option.take(word);
  } catch (const UsageError& error) {
    throw UsageError(fmt::format("{} {}: {}", option.is_argument() ? command : option.name(),
                                 word.empty() ? "\"\"" : Excerpt(word), error.what()));
  }
}

void AddTo(CLI::App& app, const std::string& command, Option& option) {
  if (option.value.empty() && !option.is_argument()) {
    app.add_flag_callback(option.names, [&option] {
      option.given = true;
      option.take({});
    });
    return;
  }
  const auto take = [&option, &command](const CLI::results_t& words) {
    if (words.size() > 1 && !option.repeats) {
      throw UsageError(
          fmt::format("{}: given twice, as {} and {}", option.name(), words[0], words[1]));
    }
    option.given = true;
    for (const std::string& word : words) Take(command, option, word);
    return true;
  };
  const std::string position = fmt::format("argument{}", app.get_options().size());
  CLI::Option* const added = app.add_option(option.is_argument() ? position : option.names, take);
  added->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  if (option.is_argument() && option.repeats) {
    added->expected(-1);
  } else {
    added->expected(1)->allow_extra_args(false);
  }
}

std::string WithoutValue(const std::string& word) { return word.substr(0, word.find('=')); }

[[noreturn]] void RefuseOption(const std::string& command, const OptionSet& options,
                               const std::string& word) {
  std::vector<std::string_view> names{"--help"};
  for (const Option& option : options.all()) {
    if (!option.is_argument()) names.push_back(option.name());
  }
  const std::string name = WithoutValue(word);
  throw UsageError(
      fmt::format("{}: {} has no such option{}", Excerpt(name), command, DidYouMean(name, names)));
}

bool IsOption(const std::string& word) { return word.size() > 1 && word.starts_with('-'); }

/// What nothing of the command took. A word behind an unknown option may have been its value.
void RefuseExtras(const std::string& command, const OptionSet& options,
                  std::vector<std::string> extras) {
  std::erase(extras, "--");
  if (extras.empty()) return;
  const auto option = std::ranges::find_if(extras, IsOption);
  if (option != extras.end()) RefuseOption(command, options, *option);
  throw UsageError(fmt::format("{}: unexpected argument \"{}\"", command, Excerpt(extras.front())));
}

void RefuseValuesOfFlags(const OptionSet& options, std::span<const std::string> words) {
  for (const std::string& word : words) {
    const std::string name = WithoutValue(word);
    const Option* const option = IsOption(word) && name != word ? options.Find(name) : nullptr;
    if (option != nullptr && option->value.empty()) {
      throw UsageError(fmt::format("{}: {} takes no value", Excerpt(word), name));
    }
  }
}

/// An option at the end, of which the value is missing, is the only one that CLI11 itself refuses.
[[noreturn]] void RefuseMissingValue(const std::string& command, const OptionSet& options,
                                     const std::string& last, const CLI::ParseError& error) {
  const Option* const option = options.Find(last);
  if (option == nullptr) throw UsageError(fmt::format("{}: {}", command, error.what()));
  throw UsageError(fmt::format("{}: must be followed by {}", last, option->value));
}

void Parse(const std::string& command, OptionSet& options, std::span<const std::string> words) {
  RefuseValuesOfFlags(options, words);
  CLI::App app;
  app.set_help_flag();
  app.allow_extras();
  for (Option& option : options.all()) AddTo(app, command, option);
  try {
    app.parse(
        std::vector<std::string>(words.rbegin(), words.rend()));  // CLI11 takes the last first
  } catch (const CLI::ParseError& error) {
    RefuseMissingValue(command, options, words.empty() ? command : words.back(), error);
  }
  RefuseExtras(command, options, app.remaining());
  options.CheckGiven();
}

}  // namespace

std::string DidYouMean(std::string_view word, std::span<const std::string_view> names) {
  // The nearest names include those that hold the word, and "-o" is in most options.
  constexpr std::size_t kLeast = 3;
  const auto nearest = NearestNames(word, names);
  if (word.size() < kLeast || nearest.empty()) return {};
  return fmt::format("; did you mean {}?", nearest.front());
}

std::string SeeHelp(const std::string& command) {
  return fmt::format("See \"fliglaf help{}{}\".", command.empty() ? "" : " ", command);
}

bool ParseOptions(const std::string& command, OptionSet& options,
                  std::span<const std::string> words) {
  for (const std::string& word : words) {
    if (word == "-h" || word == "--help") return false;
    if (word == "--") break;
  }
  try {
    Parse(command, options, words);
  } catch (const UsageError& error) {
    throw UsageError(error.what(), SeeHelp(command));
  }
  return true;
}

}  // namespace fliglaf::cli
