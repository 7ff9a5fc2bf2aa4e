// What the system calls in the DLL.
#include <windows.h>

#include <exception>
#include <fliglaf_type_library.h>
#include <string_view>

#include "host/com/mpu_object.h"
#include "platform/win32/class_registration.h"
#include "platform/win32/module.h"

namespace fliglaf {
namespace {

using platform::RegisteredFor;

// The type library's numbers, for those who read them from the DLL.
constexpr GUID kTypeLibrary = {
    0x1745cf28, 0xed94, 0x497f, {0xa8, 0xb9, 0x32, 0x8e, 0x76, 0x49, 0x66, 0x8d}};

platform::ComClass Description() {
  return {.id = __uuidof(::clsMPU),
          .name = L"fliglaf device algorithms",
          .prog_ids = {L"fliglaf.clsMPU"},
          .type_library = kTypeLibrary,
          .version = FLIGLAF_TYPELIB_VERSION};
}

/// Class and type library, or neither of them.
HRESULT Install(RegisteredFor whom) noexcept {
  try {
    const HRESULT status = platform::RegisterComClass(Description(), whom);
    if (FAILED(status)) return status;
    const HRESULT library = platform::RegisterModuleTypeLibrary(whom);
    if (FAILED(library)) {
      static_cast<void>(platform::UnregisterComClass(Description(), whom));
    }
    return library;
  } catch (const std::exception&) {
    return E_OUTOFMEMORY;
  }
}

HRESULT Uninstall(RegisteredFor whom) noexcept {
  try {
    const HRESULT status = platform::UnregisterComClass(Description(), whom);
    const HRESULT library = platform::UnregisterModuleTypeLibrary(whom);
    return FAILED(status) ? status : library;
  } catch (const std::exception&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace
}  // namespace fliglaf

STDAPI DllGetClassObject(REFCLSID id, REFIID iid, void** object) {
  return fliglaf::platform::GetClassObject(id, __uuidof(::clsMPU), fliglaf::MpuObject::Create, iid,
                                           object);
}

STDAPI DllCanUnloadNow() {
  if (fliglaf::platform::ModuleReferences() != 0) return S_FALSE;
  fliglaf::platform::LetModuleGo();
  return S_OK;
}

STDAPI DllRegisterServer() { return fliglaf::Install(fliglaf::RegisteredFor::kEverybody); }

STDAPI DllUnregisterServer() { return fliglaf::Uninstall(fliglaf::RegisteredFor::kEverybody); }

/// regsvr32 /n /i:user: for the user alone, without administrator rights.
STDAPI DllInstall(BOOL install, LPCWSTR command_line) {
  using fliglaf::RegisteredFor;
  const std::wstring_view command = command_line == nullptr ? L"" : command_line;
  if (!command.empty() && command != L"user") return E_INVALIDARG;
  const auto whom = command.empty() ? RegisteredFor::kEverybody : RegisteredFor::kUser;
  return install ? fliglaf::Install(whom) : fliglaf::Uninstall(whom);
}
