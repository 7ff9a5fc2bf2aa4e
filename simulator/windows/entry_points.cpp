// What the host's library and the system call in the stand-ins.
#include <windows.h>

#include <algorithm>
#include <exception>

#include "platform/win32/class_registration.h"
#include "simulator/windows/io_helper.h"
#include "simulator/windows/simulated_components.h"

namespace fliglaf::simulator {
namespace {

using platform::RegisteredFor;

constexpr CLSID kIoHelperClass = {
    0x594eba2f, 0xff35, 0x48b5, {0x9c, 0xd0, 0x2a, 0x87, 0x35, 0xc4, 0x4d, 0xb4}};

/// The programmer's own helper keeps its name where it is installed; FLIGLAF_IOHELPER then names
/// the stand-in.
platform::ComClass Description() {
  return {.id = kIoHelperClass,
          .name = L"fliglaf simulated programmer",
          .prog_ids = {L"fliglaf.SimulatedIoHelper", L"IoHelper.IoHelper"},
          .type_library = {0x1745cf28,
                           0xed94,
                           0x497f,
                           {0xa8, 0xb9, 0x32, 0x8e, 0x76, 0x49, 0x66, 0x8d}},
          .version = L"1.0"};
}

template <class Change>
HRESULT InRegistry(const Change& change, RegisteredFor whom) noexcept {
  try {
    return change(Description(), whom);
  } catch (const std::exception&) {
    return E_OUTOFMEMORY;
  }
}

/// The flat calls report nothing: what fails shows in the data.
template <class Operation>
void Quietly(const Operation& operation) noexcept {
  try {
    operation();
  } catch (const std::exception& error) {
    OutputDebugStringA(error.what());
  }
}

}  // namespace
}  // namespace fliglaf::simulator

using namespace fliglaf::simulator;  // NOLINT: the names below are the system's

extern "C" void __stdcall usbcomwrite(const std::uint8_t* buffer, std::int32_t length) {
  Quietly([=] {
    TheComponents().programmer().usbcomwrite({buffer, static_cast<std::size_t>(length)});
  });
}

extern "C" void __stdcall usbbulkread(std::uint8_t* destination, std::int32_t count,
                                      std::uint8_t* status) {
  Quietly([=] {
    TheComponents().StartTransfer({destination, static_cast<std::size_t>(count)}, *status);
  });
}

extern "C" void __stdcall datstr(char* text, std::int32_t value, std::int32_t digits) {
  Quietly([=] { std::ranges::copy(TheComponents().programmer().datstr(value, digits), text); });
}

STDAPI DllGetClassObject(REFCLSID id, REFIID iid, void** object) {
  return fliglaf::platform::GetClassObject(id, kIoHelperClass, IoHelper::Create, iid, object);
}

STDAPI DllCanUnloadNow() { return fliglaf::platform::ModuleReferences() == 0 ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() {
  return InRegistry(fliglaf::platform::RegisterComClass, RegisteredFor::kEverybody);
}

STDAPI DllUnregisterServer() {
  return InRegistry(fliglaf::platform::UnregisterComClass, RegisteredFor::kEverybody);
}

/// regsvr32 /n /i:user: for the user alone.
STDAPI DllInstall(BOOL install, LPCWSTR /*command_line*/) {
  return install ? InRegistry(fliglaf::platform::RegisterComClass, RegisteredFor::kUser)
                 : InRegistry(fliglaf::platform::UnregisterComClass, RegisteredFor::kUser);
}
