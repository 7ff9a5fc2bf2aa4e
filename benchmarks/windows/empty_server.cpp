// A COM server that does nothing, built as fliglaf.dll is: the measure for loading that one.
#include <windows.h>

#include "platform/win32/com_object.h"

namespace fliglaf {
namespace {

class Empty final : public platform::ComObject<IUnknown> {
 public:
  static HRESULT Create(REFIID iid, void** object) noexcept {
    return platform::MakeObject<Empty>()->QueryInterface(iid, object);
  }
};

}  // namespace
}  // namespace fliglaf

STDAPI DllGetClassObject(REFCLSID id, REFIID iid, void** object) {
  return fliglaf::platform::GetClassObject(id, id, fliglaf::Empty::Create, iid, object);
}
STDAPI DllCanUnloadNow() { return fliglaf::platform::ModuleReferences() == 0 ? S_OK : S_FALSE; }
