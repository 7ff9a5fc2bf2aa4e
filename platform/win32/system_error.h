#pragma once

#include <windows.h>

#include <memory>

namespace fliglaf::platform {

/// Throws std::system_error with an error of Windows.
[[noreturn]] void ThrowError(DWORD error);
/// The same with GetLastError().
[[noreturn]] void ThrowLastError();

struct HandleCloser {
  void operator()(HANDLE handle) const {
    if (handle != INVALID_HANDLE_VALUE) ::CloseHandle(handle);
  }
};
/// Closes its handle; null and INVALID_HANDLE_VALUE are none.
using OwnedHandle = std::unique_ptr<void, HandleCloser>;

}  // namespace fliglaf::platform
