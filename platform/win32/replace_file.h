#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace fliglaf::platform {

/// Makes `contents` the content of a file, which has its old content or all of the new one. The
/// result is ERROR_SUCCESS or Windows' error. For the DLL, in which the standard library's files
/// and paths would weigh as much as all the rest.
[[nodiscard]] DWORD ReplaceFileContents(const std::wstring& file, std::string_view contents);

}  // namespace fliglaf::platform
