// A COM object with a dual interface whose late-bound side goes by the module's type library.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include "platform/win32/com_object.h"
#include "platform/win32/module.h"

namespace fliglaf::platform {

/// Late-bound calls fail with DISP_E_UNKNOWNNAME when the module has no such type library.
template <class Interface>
class DispatchObject : public ComObject<Interface> {
 public:
  DispatchObject() {
    ComPtr<ITypeLib> library;
    if (SUCCEEDED(LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, library.GetAddressOf()))) {
      library->GetTypeInfoOfGuid(__uuidof(Interface), type_info_.GetAddressOf());
    }
  }

  STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override {
    if (count == nullptr) return E_POINTER;
    *count = type_info_ ? 1 : 0;
    return S_OK;
  }

  STDMETHODIMP GetTypeInfo(UINT index, LCID /*locale*/, ITypeInfo** info) noexcept override {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    return index != 0 || !type_info_ ? DISP_E_BADINDEX : type_info_.CopyTo(info);
  }

  STDMETHODIMP GetIDsOfNames(REFIID /*iid*/, LPOLESTR* names, UINT count, LCID /*locale*/,
                             DISPID* ids) noexcept override {
    return type_info_ ? type_info_->GetIDsOfNames(names, count, ids) : DISP_E_UNKNOWNNAME;
  }

  STDMETHODIMP Invoke(DISPID id, REFIID /*iid*/, LCID /*locale*/, WORD kind, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception,
                      UINT* argument_error) noexcept override {
    if (!type_info_) return DISP_E_MEMBERNOTFOUND;
    return type_info_->Invoke(static_cast<Interface*>(this), id, kind, parameters, result,
                              exception, argument_error);
  }

 private:
  ComPtr<ITypeInfo> type_info_;
};

}  // namespace fliglaf::platform
