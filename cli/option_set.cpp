#include "cli/option_set.h"

#include <algorithm>
#include <charconv>

#include <fmt/format.h>

#include "images/utf8_path.h"

namespace fliglaf::cli {

std::string Alternatives(std::string_view choices) {
  std::string text(choices);
  const std::size_t last = text.rfind('|');
  if (last != std::string::npos) text.replace(last, 1, " or ");
  for (std::size_t bar = 0; (bar = text.find('|')) != std::string::npos;)
    text.replace(bar, 1, ", ");
  return text;
}

Option& OptionSet::Add(std::string names, std::string value, std::string help,
                       std::function<void(const std::string& word)> take, bool repeats) {
  return options_.emplace_back(Option{.names = std::move(names),
                                      .value = std::move(value),
                                      .help = std::move(help),
                                      .take = std::move(take),
                                      .repeats = repeats,
                                      .group = group_});
}

Option& OptionSet::Flag(std::string names, std::string help, bool& value, bool given) {
  return Add(std::move(names), {}, std::move(help),
             [&value, given](const std::string& /*word*/) { value = given; });
}

Option& OptionSet::Text(std::string names, std::string value, std::string help, std::string& text) {
  return Add(std::move(names), std::move(value), std::move(help),
             [&text](const std::string& word) { text = word; });
}

Option& OptionSet::Texts(std::string names, std::string value, std::string help,
                         std::vector<std::string>& texts) {
  return Add(
      std::move(names), std::move(value), std::move(help),
      [&texts](const std::string& word) { texts.push_back(word); }, true);
}

Option& OptionSet::Number(std::string names, std::string value, std::string help, int& number,
                          int first, int last) {
  return Add(std::move(names), std::move(value), std::move(help),
             [&number, first, last](const std::string& word) {
               int read = 0;
               const char* const stop = word.data() + word.size();
               const auto [end, error] = std::from_chars(word.data(), stop, read);
               if (error != std::errc{} || end != stop || read < first || read > last) {
                 throw UsageError(fmt::format("must be a number from {} to {}", first, last));
               }
               number = read;
             });
}

Option& OptionSet::File(std::string names, std::string help, std::filesystem::path& path) {
  Option& option = Add(std::move(names), "FILE", std::move(help), [&path](const std::string& word) {
    if (word.empty()) throw UsageError("must be the name of a file");
    path = Utf8Path(word);
  });
  files_.push_back({.role = std::string(option.name()), .path = &path});
  return option;
}

Option& OptionSet::Paths(std::string names, std::string value, std::string help,
                         std::vector<std::filesystem::path>& paths) {
  return Add(
      std::move(names), std::move(value), std::move(help),
      [&paths](const std::string& word) { paths.push_back(Utf8Path(word)); }, true);
}

Option& OptionSet::Folders(std::string names, std::string help,
                           std::vector<std::filesystem::path>& paths) {
  folders_ = &paths;
  return Paths(std::move(names), "DIR", std::move(help), paths);
}

const Option* OptionSet::Find(std::string_view name) const {
  const std::string wanted = fmt::format(",{},", name);
  const auto found = std::ranges::find_if(options_, [&wanted](const Option& option) {
    return fmt::format(",{},", option.names).find(wanted) != std::string::npos;
  });
  return found == options_.end() ? nullptr : &*found;
}

void OptionSet::CheckGiven() const {
  for (const Option& option : options_) {
    if (!option.given && !option.when_missing.empty()) throw UsageError(option.when_missing);
  }
  const auto given = [this](std::string_view name) {
    const Option* const option = Find(name);
    return option != nullptr && option->given;
  };
  for (const auto& [one, other] : exclusions_) {
    if (!given(one) || !given(other)) continue;
    throw UsageError(fmt::format("{} and {} must not be given together", one, other));
  }
}

}  // namespace fliglaf::cli
