// What `fliglaf replay FILE...` does.
#pragma once

#include <filesystem>
#include <ostream>
#include <span>

namespace fliglaf::record {

struct ReplayOptions {
  /// Tell, under a difference, the ten calls before it and where in the run it was.
  bool explain = false;
};

/// Exit statuses.
inline constexpr int kAllAgree = 0;
inline constexpr int kSomeDiffer = 1;
inline constexpr int kUnreadable = 2;

/// Plays each record in a fresh instance of the library. Writes a line per file to `out`:
/// `FILE: ok, N calls`, or the first difference as `FILE:LINE: expected CALL, got CALL`; files that
/// cannot be read get a line on `err` that names file, line and what is wrong. Returns kUnreadable
/// when there was one, else kSomeDiffer when a record differs, else kAllAgree.
[[nodiscard]] int Replay(std::span<const std::filesystem::path> files, const ReplayOptions& options,
                         std::ostream& out, std::ostream& err);

}  // namespace fliglaf::record
