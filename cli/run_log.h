#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace fliglaf::cli {

/// The first byte that is not what it should be.
struct Mismatch {
  std::uint32_t address = 0;
  std::uint8_t device = 0;
  std::optional<std::uint8_t> file;  ///< none in a blank check
};

/// What a host can tell from the library's log.
struct RunLog {
  /// The elapsed time; none when the request did not run to its end.
  std::optional<double> seconds;
  /// Lines of a compare listing.
  int differences = 0;
  std::optional<Mismatch> mismatch;
  /// The line of a component failure or an index error that ended the run, without its ">>".
  std::string failure;
};

[[nodiscard]] RunLog ReadRunLog(std::string_view log);

/// The operation whose start line stands last in the log; empty when there is none.
[[nodiscard]] std::string_view CurrentOperation(std::string_view log);

}  // namespace fliglaf::cli
