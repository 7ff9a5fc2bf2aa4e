// The module that this code is linked into: the library's DLL, not the program that loaded it.
#pragma once

#include <windows.h>

#include <string>

namespace fliglaf::platform {

[[nodiscard]] HINSTANCE ThisModule();

/// Full path of the module's file; empty when Windows does not tell.
[[nodiscard]] std::wstring ModulePath();

/// From here on the module stays loaded, though its last user may unload it, until it is let go.
/// For windows, which a host may leave open when it has done with COM.
void KeepModuleLoaded();
/// To be called while a user has it loaded: nothing may run in it when it goes.
void LetModuleGo();

/// An environment variable, empty when it is not set.
[[nodiscard]] std::wstring EnvironmentText(const wchar_t* name);

}  // namespace fliglaf::platform
