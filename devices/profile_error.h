#pragma once

#include <stdexcept>

namespace fliglaf {

/// A device profile that cannot be used. The message says where (FILE:LINE), what is wrong there
/// and what would be right.
class ProfileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace fliglaf
