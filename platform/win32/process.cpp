#include "platform/win32/process.h"

#include <windows.h>

#include "platform/win32/module.h"

namespace fliglaf::platform {

std::filesystem::path ProgramFolder() { return std::filesystem::path(ModulePath()).parent_path(); }

void SetEnvironmentText(const wchar_t* name, const std::wstring& text) {
  SetEnvironmentVariableW(name, text.empty() ? nullptr : text.c_str());
}

void AddLibraryFolder(const std::filesystem::path& folder) { SetDllDirectoryW(folder.c_str()); }

}  // namespace fliglaf::platform
