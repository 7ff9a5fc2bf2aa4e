#include "images/image_builder.h"

#include <algorithm>
#include <string>

namespace fliglaf {

void ImageBuilder::Add(std::uint32_t address, std::span<const std::uint8_t> bytes,
                       std::uint32_t line) {
  if (bytes.empty()) return;
  if (bytes.size() - 1 > kLastAddress - address) {
    Fail({file_, line}, std::to_string(bytes.size()) + " bytes from address " +
                            Hexadecimal(address, 8) + " go beyond 0xFFFFFFFF");
  }
  pieces_.push_back({address, line, bytes_.size(), bytes.size()});
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

Image ImageBuilder::Finish(std::uint32_t last_line) {
  if (pieces_.empty()) {
    Fail({file_, last_line}, "the file has no data; an image must have at least one byte");
  }
  // Almost every file is in order already. Stable, so that a message names the same lines always.
  if (!std::ranges::is_sorted(pieces_, {}, &Piece::address)) {
    std::ranges::stable_sort(pieces_, {}, &Piece::address);
  }
  Image image;
  for (std::size_t index = 0; index < pieces_.size(); ++index) {
    const Piece& piece = pieces_[index];
    if (piece.address > image.end() || image.segments.empty()) {
      image.segments.push_back({piece.address, {}});
    }
    Segment& segment = image.segments.back();
    CheckOverlap(segment, index);
    const std::uint64_t known = std::min<std::uint64_t>(segment.end() - piece.address, piece.size);
    const auto more = BytesOf(piece).subspan(static_cast<std::size_t>(known));
    segment.bytes.insert(segment.bytes.end(), more.begin(), more.end());
  }
  return image;
}

/// Compares piece `index` with what earlier pieces made of its addresses.
void ImageBuilder::CheckOverlap(const Segment& segment, std::size_t index) const {
  const Piece& piece = pieces_[index];
  const auto present = std::span(segment.bytes).subspan(piece.address - segment.address);
  const auto bytes = BytesOf(piece);
  for (std::size_t i = 0; i < std::min(present.size(), bytes.size()); ++i) {
    if (present[i] != bytes[i]) FailOverlap(piece.address + static_cast<std::uint32_t>(i), index);
  }
}

/// Names the lines that disagree on `address`: that of piece `index` and that of an earlier one,
/// which all agree.
void ImageBuilder::FailOverlap(std::uint32_t address, std::size_t index) const {
  const auto covers = [address](const Piece& p) {
    return p.address <= address && address - p.address < p.size;
  };
  const Piece* one = &*std::ranges::find_if(pieces_, covers);
  const Piece* other = &pieces_[index];
  if (one->line > other->line) std::swap(one, other);
  const auto value = [&](const Piece* p) {
    return Hexadecimal(BytesOf(*p)[address - p->address], 2);
  };
  Fail({file_, other->line}, "address " + Hexadecimal(address, 4) + " is " + value(other) +
                                 " here but " + value(one) + " in line " +
                                 std::to_string(one->line));
}

}  // namespace fliglaf
