// Writing a file so that it has its old content or all of the new one, whatever happens meanwhile.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace fliglaf::platform {

class FileLock;

/// Why `file`, which exists, may not be replaced: it is write-protected, or its folder forbids it.
/// Empty when nothing is known against it.
[[nodiscard]] std::string WhyNotReplaceable(const std::filesystem::path& file);

/// An open stream, or a temporary file that can take the name of another. Its functions throw
/// std::system_error; the destructor removes a temporary file that has taken no name.
class OutputFile {
 public:
  /// Opens a device, a pipe or a file that is being added to. Waits for the reader of a pipe, here
  /// and in Write, until StopRequested(), and then throws Stopped.
  [[nodiscard]] static OutputFile OpenStream(const std::filesystem::path& stream);
  /// Makes a temporary file in the folder of `destination`, which is not a symbolic link. If it
  /// replaces a file it gets its permissions, and its owner, access control list and extended
  /// attributes where the system allows. Temporary files that ended processes left in the folder
  /// are removed.
  [[nodiscard]] static OutputFile MakeTemporary(const std::filesystem::path& destination);

  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&&) = delete;
  ~OutputFile();

  void Write(std::span<const std::uint8_t> bytes);
  /// Returns when the device has what was written.
  void Flush();
  /// The temporary file replaces the destination; of a stream there is nothing to do. A lock that
  /// this process has on the destination goes over to the new file; null: none.
  void Replace(FileLock* lock);
  /// The temporary file takes the name of the destination; false when the name is in use.
  [[nodiscard]] bool TakeFreeName();

 private:
  OutputFile(std::intptr_t handle, std::filesystem::path temporary,
             std::filesystem::path destination);

  std::intptr_t handle_;               ///< descriptor or HANDLE; -1: none
  std::filesystem::path temporary_;    ///< empty: none, or it has taken its name
  std::filesystem::path destination_;  ///< of the temporary file
};

}  // namespace fliglaf::platform
