// Files read whole and written whole or not at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/output_file.h"

namespace fliglaf {

/// A file that cannot be read or written, or that holds no image. The message begins with "FILE: "
/// or "FILE:LINE: " and says what is wrong and what would be right.
class ImageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The most bytes that ReadFileWhole takes: 64 MiB.
inline constexpr std::size_t kLargestFile = std::size_t{64} << 20;

/// The content of a file or stream. Throws ImageError when it is missing, a folder, unreadable or
/// larger than kLargestFile, and platform::Stopped when the user stops the program while it waits
/// for the other end of a pipe.
[[nodiscard]] std::vector<std::uint8_t> ReadFileWhole(const std::filesystem::path& path);

/// Writes a file piece by piece. The content is built beside the file and takes its name when the
/// device has all of it, so a reader sees the old or the new one, also after a power failure. A
/// replaced file hands down its permissions, and its owner, access control list and extended
/// attributes where the system allows. At the end of a symbolic link the file that it names is
/// replaced. A write-protected file is not replaced. A character device, a pipe and an open stream
/// such as /dev/stdout are written straight; where a pipe has no reader, or a slow one, the user
/// can stop the wait: platform::Stopped.
class WholeFileWriter {
 public:
  /// Throws ImageError when the file cannot be written, and changes nothing.
  explicit WholeFileWriter(std::filesystem::path path);
  WholeFileWriter(const WholeFileWriter&) = delete;
  WholeFileWriter& operator=(const WholeFileWriter&) = delete;
  /// What has not been kept is dropped, and the file keeps its old content.
  ~WholeFileWriter() = default;

  /// Adds a piece. Where that fails, it and what follows is dropped, and Keep says why.
  void Write(std::span<const std::uint8_t> bytes);
  /// Completes the file. Throws ImageError when not all of it could be written. A lock that this
  /// process has on the file goes over to the new one; null: none.
  void Keep(platform::FileLock* lock = nullptr);

 private:
  std::filesystem::path named_;  ///< as the user knows it, for messages
  platform::OutputFile file_;
  std::string problem_;  ///< why a piece could not be written
};

/// Makes `bytes` the content of the file as a WholeFileWriter does, or throws ImageError and leaves
/// the file as it was. For `lock` see WholeFileWriter::Keep.
void WriteFileWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                    platform::FileLock* lock = nullptr);

/// Creates the file with `bytes` as its content unless it exists: then the result is false. When
/// several processes try it at a time, one of them gets true. Throws ImageError.
[[nodiscard]] bool CreateFileWhole(const std::filesystem::path& path,
                                   std::span<const std::uint8_t> bytes);

/// Where a write to `path` goes: the end of its symbolic links, which need not exist. Throws
/// ImageError for what cannot be written.
[[nodiscard]] std::filesystem::path EndOfLinks(const std::filesystem::path& path);

/// Throws ImageError when WriteFileWhole would fail for what can be known before: a missing folder
/// or one that does not let this user replace the file, a folder or a block device in the place of
/// the file, a write-protected file. Changes no file and leaves none behind.
void CheckWritable(const std::filesystem::path& path);

}  // namespace fliglaf
