// The module that this code is linked into: the library's DLL, not the program that loaded it.
#pragma once

#include <windows.h>

#include <string>

namespace fliglaf::platform {

[[nodiscard]] HINSTANCE ThisModule();

/// Full path of the module's file; empty when Windows does not tell.
[[nodiscard]] std::wstring ModulePath();

/// An environment variable, empty when it is not set.
[[nodiscard]] std::wstring EnvironmentText(const wchar_t* name);

}  // namespace fliglaf::platform
