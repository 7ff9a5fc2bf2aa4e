#pragma once

#include <filesystem>
#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/usage_error.h"

namespace fliglaf::cli {

/// An option or argument of a command: what the help says of it, and where its value goes.
struct Option {
  std::string names;  ///< "-o,--output"; without a dash the name of an argument
  std::string value;  ///< stands for its value in the help; empty: it takes none
  std::string help;
  /// Takes a word of the command line, which a flag does not have. Throws UsageError, "must be ...".
  std::function<void(const std::string& word)> take;
  bool repeats = false;
  std::string group = {};         ///< its heading in the help; empty: the common one
  std::string when_missing = {};  ///< the error when it is not given; empty: it need not be
  bool required = false;          ///< shown as such, also where the command itself looks for it
  bool given = false;

  [[nodiscard]] bool is_argument() const { return !names.starts_with('-'); }
  /// Its longest name: "--output".
  [[nodiscard]] std::string_view name() const {
    return std::string_view(names).substr(names.rfind(',') + 1);
  }
};

/// "auto, bar or none" of "auto|bar|none".
[[nodiscard]] std::string Alternatives(std::string_view choices);

/// A file that an option names, for the check that one file has one role.
struct NamedFile {
  std::string role;  ///< the option's name
  const std::filesystem::path* path;
};

/// The options and arguments of a command. What they fill outlives the set.
class OptionSet {
 public:
  OptionSet() = default;
  OptionSet(const OptionSet&) = delete;
  OptionSet& operator=(const OptionSet&) = delete;

  /// One whose value goes to `take`: see Option.
  Option& Add(std::string names, std::string value, std::string help,
              std::function<void(const std::string& word)> take, bool repeats = false);
  Option& Flag(std::string names, std::string help, bool& value, bool given = true);
  Option& Text(std::string names, std::string value, std::string help, std::string& text);
  Option& Texts(std::string names, std::string value, std::string help,
                std::vector<std::string>& texts);
  /// A whole number from `first` to `last`.
  Option& Number(std::string names, std::string value, std::string help, int& number, int first,
                 int last);
  Option& File(std::string names, std::string help, std::filesystem::path& path);
  /// Several of one role, which are not among files().
  Option& Paths(std::string names, std::string value, std::string help,
                std::vector<std::filesystem::path>& paths);
  /// Folders with device profiles.
  Option& Folders(std::string names, std::string help, std::vector<std::filesystem::path>& paths);
  template <class T>
  Option& Choice(std::string names, std::string help, T& value,
                 std::vector<std::pair<std::string, T>> choices);

  /// The options from here on stand under this heading of the help; empty: under the common one.
  void Under(std::string heading) { group_ = std::move(heading); }
  /// `name` and any of `others` must not be given together.
  void Exclude(const std::string& name, const std::vector<std::string>& others) {
    for (const std::string& other : others) exclusions_.emplace_back(name, other);
  }

  /// A list of the help, under a heading of its own, behind the options.
  void Explain(std::string heading, std::vector<std::vector<std::string>> rows) {
    explained_.emplace_back(std::move(heading), std::move(rows));
  }

  [[nodiscard]] std::list<Option>& all() { return options_; }
  [[nodiscard]] const std::list<Option>& all() const { return options_; }
  [[nodiscard]] const auto& explained() const { return explained_; }
  [[nodiscard]] const std::vector<NamedFile>& files() const { return files_; }
  [[nodiscard]] const std::vector<std::filesystem::path>& folders() const { return *folders_; }
  /// Null for a name that none of them has.
  [[nodiscard]] const Option* Find(std::string_view name) const;

  /// Throws UsageError for one that is missing or excluded by another, once all are taken.
  void CheckGiven() const;

 private:
  std::list<Option> options_;
  std::string group_;
  std::vector<std::pair<std::string, std::vector<std::vector<std::string>>>> explained_;
  std::vector<NamedFile> files_;
  std::vector<std::filesystem::path> no_folders_;
  const std::vector<std::filesystem::path>* folders_ = &no_folders_;
  std::vector<std::pair<std::string, std::string>> exclusions_;
};

template <class T>
Option& OptionSet::Choice(std::string names, std::string help, T& value,
                          std::vector<std::pair<std::string, T>> choices) {
  std::string words;
  for (const auto& choice : choices) words += (words.empty() ? "" : "|") + choice.first;
  return Add(std::move(names), words, std::move(help),
             [&value, choices = std::move(choices), words](const std::string& word) {
               for (const auto& [name, meaning] : choices) {
                 if (name == word) return void(value = meaning);
               }
               throw UsageError("must be " + Alternatives(words));
             });
}

}  // namespace fliglaf::cli
