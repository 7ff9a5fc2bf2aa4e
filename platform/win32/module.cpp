#include "platform/win32/module.h"

#include <atomic>

extern "C" IMAGE_DOS_HEADER __ImageBase;  // NOLINT: the linker's name

namespace fliglaf::platform {
namespace {

constexpr DWORD kLongestPath = 32'768;  // characters, the end included

/// Whether the module holds itself loaded.
std::atomic<bool>& KeptByItself() {
  static std::atomic<bool> kept = false;
  return kept;
}

}  // namespace

HINSTANCE ThisModule() { return reinterpret_cast<HINSTANCE>(&__ImageBase); }

std::wstring ModulePath() {
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetModuleFileNameW(ThisModule(), path.data(), kLongestPath));
  return path;
}

void KeepModuleLoaded() {
  if (!KeptByItself().exchange(true)) {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const wchar_t*>(&__ImageBase), &module);
  }
}

void LetModuleGo() {
  if (KeptByItself().exchange(false)) FreeLibrary(ThisModule());
}

std::wstring EnvironmentText(const wchar_t* name) {
  std::wstring text;
  DWORD needed = GetEnvironmentVariableW(name, nullptr, 0);
  while (needed > text.size()) {
    text.resize(needed);
    needed = GetEnvironmentVariableW(name, text.data(), static_cast<DWORD>(text.size()));
  }
  text.resize(needed);
  return text;
}

}  // namespace fliglaf::platform
