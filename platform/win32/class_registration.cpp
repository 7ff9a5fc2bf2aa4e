#include "platform/win32/class_registration.h"

#include <array>
#include <oleauto.h>
#include <utility>

#include "platform/win32/com_object.h"
#include "platform/win32/module.h"

// Since Windows Vista in oleaut32, and in MinGW-w64's library of it, but not in its header.
extern "C" {
HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* help_folder);
HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID locale,
                                        SYSKIND system);
}

namespace fliglaf::platform {
namespace {

HKEY RootOf(RegisteredFor whom) {
  return whom == RegisteredFor::kUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

std::wstring InClasses(const std::wstring& key) { return L"Software\\Classes\\" + key; }

std::wstring GuidText(const GUID& guid) {
  std::array<wchar_t, 39> text{};
  StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
  return text.data();
}

/// Default value of a key; empty when there is none.
std::wstring ReadDefault(HKEY root, const std::wstring& key) {
  std::array<wchar_t, 64> text{};
  DWORD bytes = sizeof text;
  const LSTATUS status = RegGetValueW(root, InClasses(key).c_str(), nullptr, RRF_RT_REG_SZ, nullptr,
                                      text.data(), &bytes);
  return status == ERROR_SUCCESS ? text.data() : L"";
}

LSTATUS Write(HKEY root, const std::wstring& key, const wchar_t* name, const std::wstring& text) {
  return RegSetKeyValueW(root, InClasses(key).c_str(), name, REG_SZ, text.c_str(),
                         static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

LSTATUS Remove(HKEY root, const std::wstring& key) {
  const LSTATUS status = RegDeleteTreeW(root, InClasses(key).c_str());
  return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}

struct Value {
  std::wstring key;
  const wchar_t* name;
  std::wstring text;
};

/// Everything that describes the class, in the order of writing.
std::vector<Value> ValuesOf(const ComClass& com_class, HKEY root) {
  const std::wstring id = GuidText(com_class.id);
  const std::wstring key = L"CLSID\\" + id;
  std::vector<Value> values{{key, nullptr, com_class.name},
                            {key + L"\\InprocServer32", nullptr, ModulePath()},
                            {key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
                            {key + L"\\ProgID", nullptr, com_class.prog_ids.front()},
                            {key + L"\\Programmable", nullptr, L""},
                            {key + L"\\TypeLib", nullptr, GuidText(com_class.type_library)},
                            {key + L"\\Version", nullptr, com_class.version}};
  for (const std::wstring& prog_id : com_class.prog_ids) {
    const std::wstring owner = ReadDefault(root, prog_id + L"\\CLSID");
    if (!owner.empty() && owner != id) continue;
    values.push_back({prog_id, nullptr, com_class.name});
    values.push_back({prog_id + L"\\CLSID", nullptr, id});
  }
  return values;
}

HRESULT LoadModuleTypeLibrary(ComPtr<ITypeLib>& library) {
  return LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, library.ReleaseAndGetAddressOf());
}

}  // namespace

HRESULT RegisterComClass(const ComClass& com_class, RegisteredFor whom) {
  const HKEY root = RootOf(whom);
  for (const Value& value : ValuesOf(com_class, root)) {
    const LSTATUS status = Write(root, value.key, value.name, value.text);
    if (status == ERROR_SUCCESS) continue;
    static_cast<void>(UnregisterComClass(com_class, whom));
    return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
  }
  return S_OK;
}

HRESULT UnregisterComClass(const ComClass& com_class, RegisteredFor whom) {
  const HKEY root = RootOf(whom);
  const std::wstring id = GuidText(com_class.id);
  LSTATUS first_failure = Remove(root, L"CLSID\\" + id);
  for (const std::wstring& prog_id : com_class.prog_ids) {
    if (ReadDefault(root, prog_id + L"\\CLSID") != id) continue;
    const LSTATUS status = Remove(root, prog_id);
    if (first_failure == ERROR_SUCCESS) first_failure = status;
  }
  return HRESULT_FROM_WIN32(static_cast<DWORD>(first_failure));
}

HRESULT RegisterModuleTypeLibrary(RegisteredFor whom) {
  ComPtr<ITypeLib> library;
  const HRESULT loaded = LoadModuleTypeLibrary(library);
  if (FAILED(loaded)) return loaded;
  std::wstring path = ModulePath();
  return whom == RegisteredFor::kUser ? RegisterTypeLibForUser(library.Get(), path.data(), nullptr)
                                      : RegisterTypeLib(library.Get(), path.data(), nullptr);
}

HRESULT UnregisterModuleTypeLibrary(RegisteredFor whom) {
  ComPtr<ITypeLib> library;
  const HRESULT loaded = LoadModuleTypeLibrary(library);
  if (FAILED(loaded)) return loaded;
  TLIBATTR* attributes = nullptr;
  const HRESULT known = library->GetLibAttr(&attributes);
  if (FAILED(known)) return known;
  const auto unregister =
      whom == RegisteredFor::kUser ? UnRegisterTypeLibForUser : UnRegisterTypeLib;
  const HRESULT status =
      unregister(attributes->guid, attributes->wMajorVerNum, attributes->wMinorVerNum,
                 attributes->lcid, attributes->syskind);
  library->ReleaseTLibAttr(attributes);
  return status == TYPE_E_REGISTRYACCESS ? S_OK : status;  // it was not registered
}

}  // namespace fliglaf::platform
