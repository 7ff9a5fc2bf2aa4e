// A bulk read that was given up, and what it stores later: in the calls that follow and in turns of
// the message loop.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "shared/shared_variables.h"

namespace fliglaf::record {

class LateTransfer {
 public:
  /// Watches from now on what of `destination` and `status` lies in `vars`; all of it outlives the
  /// watch.
  LateTransfer(const SharedVariables& vars, std::span<const std::uint8_t> destination,
               const std::uint8_t& status);

  /// Takes note of what is there: what has been written up to now is the library's or the host's.
  void Look();
  /// What was stored since then, as lines of a record, and takes note of it.
  [[nodiscard]] std::string TakeChanges();
  /// The next TakeChanges says nothing of `bytes`.
  void LeaveOut(std::span<const std::uint8_t> bytes);
  /// True when the transfer has reported its failure, or success with all of its data.
  [[nodiscard]] bool over() const;

 private:
  /// A part of a variable.
  struct Piece {
    std::string_view variable;
    std::size_t index;
    std::span<const std::uint8_t> bytes;
    std::vector<std::uint8_t> seen;
  };

  void Add(const SharedVariables& vars, std::span<const std::uint8_t> bytes);

  std::vector<Piece> pieces_;
  const std::uint8_t& status_;
  const std::uint8_t& end_mark_;
};

}  // namespace fliglaf::record
