#include "platform/input_file.h"

#include <algorithm>

#include "platform/win32/system_error.h"

namespace fliglaf::platform {

std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& file, std::size_t most) {
  constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const OwnedHandle input(
      CreateFileW(file.c_str(), GENERIC_READ, kShare, nullptr, OPEN_EXISTING, 0, nullptr));
  if (input.get() == INVALID_HANDLE_VALUE) ThrowLastError();

  constexpr std::size_t kPiece = 65'536;
  std::vector<std::uint8_t> bytes;
  while (bytes.size() < most) {
    const std::size_t before = bytes.size();
    bytes.resize(std::min(before + kPiece, most));
    DWORD count = 0;
    const BOOL ok = ReadFile(input.get(), bytes.data() + before,
                             static_cast<DWORD>(bytes.size() - before), &count, nullptr);
    const DWORD error = ok == FALSE ? GetLastError() : ERROR_SUCCESS;
    bytes.resize(before + count);
    if (error == ERROR_BROKEN_PIPE || (ok != FALSE && count == 0)) break;
    if (error != ERROR_SUCCESS) ThrowError(error);
  }
  return bytes;
}

}  // namespace fliglaf::platform
