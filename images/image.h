// Device images and the files they come from and go to.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "images/whole_file.h"

namespace fliglaf {

enum class ImageFormat { kIntelHex, kSRecord, kBinary };

/// Consecutive bytes of an image. They end at 0xFFFFFFFF at the latest.
struct Segment {
  std::uint32_t address = 0;
  std::vector<std::uint8_t> bytes;

  /// The address after the last byte, up to 2^32.
  [[nodiscard]] std::uint64_t end() const { return std::uint64_t{address} + bytes.size(); }
  bool operator==(const Segment&) const = default;
};

/// What a file says of a memory: segments in ascending order that neither overlap nor touch, and
/// nothing of what lies between them. Start addresses are not content of a memory and not kept.
struct Image {
  std::vector<Segment> segments;

  /// The address after the last byte, up to 2^32; 0 without any.
  [[nodiscard]] std::uint64_t end() const { return segments.empty() ? 0 : segments.back().end(); }
  bool operator==(const Image&) const = default;
};

/// The format that the ending of a file name stands for, in either case; nullopt for endings
/// other than those of KnownEndings.
[[nodiscard]] std::optional<ImageFormat> FormatOfName(const std::filesystem::path& path);

/// The endings that FormatOfName knows, as a message lists them.
[[nodiscard]] std::string KnownEndings();

/// Reads an image of at least one byte. A file whose name ends in .bin is binary, from address 0;
/// of others the first line of a known form decides, and the ending only without one. Throws
/// ImageError, which names programs and archives as what they are.
[[nodiscard]] Image ReadImage(const std::filesystem::path& path);

/// What ReadImage makes of a file of this name with this content.
[[nodiscard]] Image ParseImage(const std::filesystem::path& path,
                               std::vector<std::uint8_t> content);

/// Writes an image as WriteFileWhole does. A binary file does not keep `first_address`. Throws
/// ImageError, also when there are no bytes or they go beyond address 0xFFFFFFFF.
void WriteImage(const std::filesystem::path& path, ImageFormat format,
                std::span<const std::uint8_t> bytes, std::uint32_t first_address = 0);

}  // namespace fliglaf
