// Files read whole and written whole or not at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <vector>

namespace fliglaf {

/// A file that cannot be read or written, or that holds no image. The message begins with "FILE: "
/// or "FILE:LINE: " and tells what is wrong and what would be right.
class ImageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The most bytes that ReadFileWhole takes: 64 MiB.
inline constexpr std::size_t kLargestFile = std::size_t{64} << 20;

/// The content of a file or stream. Throws ImageError when it is missing, a folder, unreadable or
/// larger than kLargestFile.
[[nodiscard]] std::vector<std::uint8_t> ReadFileWhole(const std::filesystem::path& path);

/// Makes `bytes` the content of the file, or throws ImageError and leaves what stood there as it
/// was. The content is built beside the file and takes its name when it is complete, so a reader
/// sees the old or the new one. The permissions of a replaced file stay; at the end of a symbolic
/// link the file that it names is replaced. A write-protected file is not replaced.
/// A character device, a pipe and an open stream such as /dev/stdout are written straight.
void WriteFileWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

/// Throws ImageError when WriteFileWhole would fail for what can be known before: a missing or
/// closed folder, a folder or a block device in the place of the file, a write-protected file.
/// Changes no file and leaves none behind.
void CheckWritable(const std::filesystem::path& path);

}  // namespace fliglaf
