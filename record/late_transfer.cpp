#include "record/late_transfer.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "record/assignment.h"
#include "record/format.h"
#include "usb/components/programmer.h"

namespace fliglaf::record {

LateTransfer::LateTransfer(const SharedVariables& vars, std::span<const std::uint8_t> destination,
                           const std::uint8_t& status)
    : status_(status), end_mark_(destination.back()) {
  Add(vars, destination);
  Add(vars, {&status, 1});
}

void LateTransfer::Add(const SharedVariables& vars, std::span<const std::uint8_t> bytes) {
  const auto [variable, index] = FindByte(vars, bytes.data());
  if (variable == nullptr) return;
  pieces_.push_back({.variable = variable->row().name,
                     .index = static_cast<std::size_t>(index),
                     .bytes = bytes,
                     .seen = {bytes.begin(), bytes.end()}});
}

void LateTransfer::Look() {
  for (Piece& piece : pieces_) std::ranges::copy(piece.bytes, piece.seen.begin());
}

std::string LateTransfer::TakeChanges() {
  std::string changes;
  for (Piece& piece : pieces_) {
    // The transfer may go on meanwhile.
    std::vector<std::uint8_t> now(piece.bytes.begin(), piece.bytes.end());
    if (now == piece.seen) continue;
    const std::vector<std::int32_t> values(now.begin(), now.end());
    WriteWhere(changes, std::string(kSetWord) + ' ' + std::string(piece.variable), piece.index,
               values, [&](std::size_t i) { return now[i] != piece.seen[i]; });
    piece.seen = std::move(now);
  }
  return changes;
}

void LateTransfer::LeaveOut(std::span<const std::uint8_t> bytes) {
  const std::less<> before;
  for (Piece& piece : pieces_) {
    for (std::size_t i = 0; i < piece.bytes.size(); ++i) {
      const std::uint8_t* const byte = &piece.bytes[i];
      const bool inside = !before(byte, bytes.data()) && before(byte, bytes.data() + bytes.size());
      if (inside) piece.seen[i] = *byte;
    }
  }
}

bool LateTransfer::over() const {
  return status_ > bulk_status::kLastGood ||
         (status_ == bulk_status::kDone && end_mark_ == kEndMark);
}

}  // namespace fliglaf::record
