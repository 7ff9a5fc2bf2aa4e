#pragma once

#include <stdexcept>

namespace fliglaf {

/// An index outside a shared variable. Caught by the driver of a request, which ends the run, and
/// at the host's boundary; nowhere else.
class RangeError : public std::out_of_range {
 public:
  RangeError() : std::out_of_range("index out of range") {}
};

}  // namespace fliglaf
