#pragma once

#include <stdexcept>

namespace fliglaf::cli {

/// Wrong use or a bad file: the message names the thing, the place and what would be right. Nothing
/// has been done to the chip.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace fliglaf::cli
