#include "cli/prompt.h"

#include <algorithm>
#include <cctype>
#include <iostream>

#include "platform/terminal.h"
#include "shared/utf8.h"

namespace fliglaf::cli {

std::optional<std::string> Ask(const std::string& question) {
  std::cerr << Printable(question) << std::flush;
  std::string line;
  if (!platform::ReadLine(line)) return std::nullopt;
  std::ranges::transform(line, line.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return line;
}

bool AskYesNo(const std::string& question) {
  for (;;) {
    const auto typed = Ask(question + " (y/N) ");
    if (!typed || typed->empty() || typed == "n" || typed == "no") return false;
    if (typed == "y" || typed == "yes") return true;
  }
}

}  // namespace fliglaf::cli
