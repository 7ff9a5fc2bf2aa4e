#pragma once

#include <stdexcept>

namespace fliglaf::simulator {

/// The bench cannot do what was asked: the message names the thing, the place and what would
/// be right.
class BenchError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace fliglaf::simulator
