// What every COM object of a module shares: reference counting, interfaces, the module's own count.
#pragma once

#include <windows.h>

#include <atomic>
#include <memory>
#include <new>
#include <type_traits>
#include <unknwn.h>
#include <utility>
#include <wrl/client.h>

namespace fliglaf::platform {

using Microsoft::WRL::ComPtr;

/// Objects and locks of this module; while there is one the module must stay loaded.
inline std::atomic<long>& ModuleReferences() {
  static std::atomic<long> references = 0;
  return references;
}

/// An object with the given interfaces, the default one first. It is made with one reference, by
/// MakeObject, and goes with the last.
template <class Default, class... Others>
class ComObject : public Default, public Others... {
 public:
  ComObject() { ++ModuleReferences(); }
  virtual ~ComObject() { --ModuleReferences(); }
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;

  STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (iid == __uuidof(IUnknown) || iid == __uuidof(Default) || IsInherited(iid)) {
      *object = static_cast<Default*>(this);
    } else {
      static_cast<void>((Offer<Others>(iid, object) || ...));
    }
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }

  STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references_; }

  STDMETHODIMP_(ULONG) Release() noexcept override {
    const ULONG left = --references_;
    if (left == 0) const std::unique_ptr<ComObject> gone(this);
    return left;
  }

 private:
  static bool IsInherited(REFIID iid) {
    return std::is_base_of_v<IDispatch, Default> && iid == __uuidof(IDispatch);
  }
  template <class Interface>
  bool Offer(REFIID iid, void** object) {
    if (iid != __uuidof(Interface)) return false;
    *object = static_cast<Interface*>(this);
    return true;
  }

  std::atomic<ULONG> references_ = 1;
};

template <class Object, class... Arguments>
[[nodiscard]] ComPtr<Object> MakeObject(Arguments&&... arguments) {
  // Not by Attach, which in some versions of MinGW-w64 takes a reference of its own.
  ComPtr<Object> object;
  *object.GetAddressOf() =
      std::make_unique<Object>(std::forward<Arguments>(arguments)...).release();
  return object;
}

/// Makes objects of one class.
class ClassFactory final : public ComObject<IClassFactory> {
 public:
  /// What CreateInstance does once the arguments have been checked; must not throw.
  using Create = HRESULT (*)(REFIID iid, void** object);
  explicit ClassFactory(Create create) : create_(create) {}

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) noexcept override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    return outer != nullptr ? CLASS_E_NOAGGREGATION : create_(iid, object);
  }

  STDMETHODIMP LockServer(BOOL lock) noexcept override {
    ModuleReferences() += lock ? 1 : -1;
    return S_OK;
  }

 private:
  Create create_;
};

/// The answer of DllGetClassObject in a module with one class.
inline HRESULT GetClassObject(REFCLSID wanted, REFCLSID offered, ClassFactory::Create create,
                              REFIID iid, void** object) noexcept {
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  if (wanted != offered) return CLASS_E_CLASSNOTAVAILABLE;
  try {
    return MakeObject<ClassFactory>(create)->QueryInterface(iid, object);
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace fliglaf::platform
