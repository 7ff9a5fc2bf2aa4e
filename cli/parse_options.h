#pragma once

#include <span>
#include <string>
#include <string_view>

#include "cli/option_set.h"

namespace fliglaf::cli {

/// Takes the words behind the name of `command`. False when they ask for its help instead. Throws
/// UsageError for what the command does not take, and for what is missing.
[[nodiscard]] bool ParseOptions(const std::string& command, OptionSet& options,
                                std::span<const std::string> words);

/// The end of a message about an unknown word: "; did you mean program?", or nothing.
[[nodiscard]] std::string DidYouMean(std::string_view word,
                                     std::span<const std::string_view> names);

/// The line below a message about the command line: where the reader finds what it must be.
[[nodiscard]] std::string SeeHelp(const std::string& command);

}  // namespace fliglaf::cli
