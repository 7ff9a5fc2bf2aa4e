// Files read whole and written whole or not at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>
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

/// Writes a file piece by piece. The content is built beside the file and takes its name when it is
/// complete, so a reader sees the old or the new one. The permissions of a replaced file stay; at
/// the end of a symbolic link the file that it names is replaced. A write-protected file is not
/// replaced. A character device, a pipe and an open stream such as /dev/stdout are written
/// straight.
class WholeFileWriter {
 public:
  /// Throws ImageError when the file cannot be written, and changes nothing.
  explicit WholeFileWriter(std::filesystem::path path);
  WholeFileWriter(const WholeFileWriter&) = delete;
  WholeFileWriter& operator=(const WholeFileWriter&) = delete;
  /// What has not been kept is gone; what stood there before stays.
  ~WholeFileWriter() = default;

  /// Adds a piece. Where that fails, it and what follows is dropped, and Keep tells why.
  void Write(std::span<const std::uint8_t> bytes);
  /// Completes the file. Throws ImageError when not all of it could be written.
  void Keep();

 private:
  /// A file that goes unless it has taken another name.
  struct Temporary {
    std::filesystem::path path;  ///< empty: none
    ~Temporary();
  };

  void OpenStream();
  void OpenTemporary(bool replaces);
  void TakePermissions();

  std::filesystem::path named_;        ///< as the user knows it, for messages
  std::filesystem::path destination_;  ///< symbolic links followed
  Temporary temporary_;                ///< none for a stream
  std::ofstream stream_;               ///< closed before that goes: Windows removes no open file
  std::string problem_;                ///< why a piece could not be written
};

/// Makes `bytes` the content of the file as a WholeFileWriter does, or throws ImageError and leaves
/// what stood there as it was.
void WriteFileWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

/// Throws ImageError when WriteFileWhole would fail for what can be known before: a missing or
/// closed folder, a folder or a block device in the place of the file, a write-protected file.
/// Changes no file and leaves none behind.
void CheckWritable(const std::filesystem::path& path);

}  // namespace fliglaf
