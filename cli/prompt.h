#pragma once

#include <optional>
#include <string>

namespace fliglaf::cli {

/// Asks on standard error and returns what the user types, in lower case; none at the end of the
/// input and when the user stops the program.
[[nodiscard]] std::optional<std::string> Ask(const std::string& question);

/// Asks for a yes, again until the answer is one of y, yes, n, no. Nothing typed, the end of the
/// input and a stop are a no.
[[nodiscard]] bool AskYesNo(const std::string& question);

}  // namespace fliglaf::cli
