#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>

#include "replay/playback.h"

namespace fliglaf::record {

struct PlayOptions {
  /// A difference tells the calls before it.
  bool keep_calls = false;
  /// Largest quorinbuflength(0) that a record may ask for, in bytes.
  std::int64_t longest_data = kLongestData;
};

struct Verdict {
  /// Component calls and message boxes that agreed.
  std::uint64_t calls = 0;
  /// None when all agreed.
  std::optional<Difference> difference;
};

/// Runs the library against the record `in`, which messages call `name`. Throws RecordError when it
/// cannot be read, std::runtime_error when somebody else in the process has the shared variables
/// of instance 0 open.
[[nodiscard]] Verdict PlayRecord(std::istream& in, const std::string& name,
                                 const PlayOptions& options);

}  // namespace fliglaf::record
