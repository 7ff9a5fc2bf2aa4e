// The module that this code is linked into: the library's DLL, not the program that loaded it.
#pragma once

#include <windows.h>

#include <string>

namespace fliglaf::platform {

[[nodiscard]] HINSTANCE ThisModule();

/// Full path of the module's file; empty if Windows cannot say.
[[nodiscard]] std::wstring ModulePath();

/// Keeps the module loaded until it is let go, even if its last user unloads it: a host may leave a
/// window open after it has finished with COM.
void KeepModuleLoaded();
/// To be called while a user has it loaded: nothing may run in it when it goes.
void LetModuleGo();

/// An environment variable, empty when it is not set.
[[nodiscard]] std::wstring EnvironmentText(const wchar_t* name);

}  // namespace fliglaf::platform
