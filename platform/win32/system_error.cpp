#include "platform/win32/system_error.h"

#include <system_error>

namespace fliglaf::platform {

void ThrowError(DWORD error) {
  throw std::system_error(static_cast<int>(error), std::system_category());
}

void ThrowLastError() { ThrowError(GetLastError()); }

}  // namespace fliglaf::platform
