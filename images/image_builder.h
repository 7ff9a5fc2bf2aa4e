// Puts the pieces of an image together, in whatever order a file brings them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "images/image.h"
#include "images/record_text.h"

namespace fliglaf {

/// Takes as much memory as the pieces do, wherever they lie.
class ImageBuilder {
 public:
  explicit ImageBuilder(std::string_view file) : file_(file) {}

  /// Adds what a line of the file holds, at most 255 bytes. Throws ImageError when it goes beyond
  /// address 0xFFFFFFFF.
  void Add(std::uint32_t address, std::span<const std::uint8_t> bytes, std::uint32_t line);

  /// The image of all pieces. Throws ImageError when two lines give one address different bytes,
  /// and when there is no piece, for which `last_line` is named.
  [[nodiscard]] Image Finish(std::uint32_t last_line);

 private:
  struct Piece {
    std::uint32_t address;
    std::uint32_t line;
    std::size_t offset;  ///< into bytes_
    std::size_t size;
  };

  [[nodiscard]] std::span<const std::uint8_t> BytesOf(const Piece& piece) const {
    return std::span(bytes_).subspan(piece.offset, piece.size);
  }
  void CheckOverlap(const Segment& segment, std::size_t index) const;
  [[noreturn]] void FailOverlap(std::uint32_t address, std::size_t index) const;

  std::string_view file_;
  std::vector<Piece> pieces_;
  std::vector<std::uint8_t> bytes_;
};

}  // namespace fliglaf
