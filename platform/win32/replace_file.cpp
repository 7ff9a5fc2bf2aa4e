#include "platform/win32/replace_file.h"

namespace fliglaf::platform {
namespace {

DWORD Write(const std::wstring& file, std::string_view contents) {
  const HANDLE handle = CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return GetLastError();
  DWORD written = 0;
  const BOOL ok =
      WriteFile(handle, contents.data(), static_cast<DWORD>(contents.size()), &written, nullptr);
  const DWORD error = ok == FALSE ? GetLastError() : ERROR_SUCCESS;
  CloseHandle(handle);
  return error;
}

}  // namespace

DWORD ReplaceFileContents(const std::wstring& file, std::string_view contents) {
  const std::wstring fresh = file + L".new";
  DWORD error = Write(fresh, contents);
  if (error == ERROR_SUCCESS &&
      MoveFileExW(fresh.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING) == FALSE) {
    error = GetLastError();
  }
  if (error != ERROR_SUCCESS) DeleteFileW(fresh.c_str());
  return error;
}

}  // namespace fliglaf::platform
