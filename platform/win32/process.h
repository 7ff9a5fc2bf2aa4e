// What a program on Windows sets up for the libraries it will load. Windows-free, as its users are.
#pragma once

#include <filesystem>
#include <string>

namespace fliglaf::platform {

/// The folder of the running program's file.
[[nodiscard]] std::filesystem::path ProgramFolder();

/// Sets a variable of the process's environment; an empty text removes it.
void SetEnvironmentText(const wchar_t* name, const std::wstring& text);

/// A folder in which LoadLibrary looks from here on, right after the program's own.
void AddLibraryFolder(const std::filesystem::path& folder);

}  // namespace fliglaf::platform
