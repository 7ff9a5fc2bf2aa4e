#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace fliglaf::cli {

/// Wrong use or a bad file: the message names the thing, the place and what would be right. Nothing
/// has been done to the chip.
class UsageError : public std::runtime_error {
 public:
  /// `see`: where the reader finds more, as a line below the message.
  explicit UsageError(const std::string& message, std::string see = {})
      : std::runtime_error(message), see_(std::move(see)) {}
  [[nodiscard]] const std::string& see() const { return see_; }

 private:
  std::string see_;
};

}  // namespace fliglaf::cli
