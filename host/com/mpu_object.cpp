#include "host/com/mpu_object.h"

#include <exception>
#include <system_error>

#include "host/com/late_binding.h"
#include "platform/win32/module.h"

namespace fliglaf {
namespace {

using platform::ComPtr;

/// A call through a null reference: refused with a text that says which argument is meant.
HRESULT RefuseNull(const wchar_t* what) noexcept {
  ComPtr<ICreateErrorInfo> error;
  ComPtr<IErrorInfo> info;
  if (FAILED(CreateErrorInfo(&error))) return E_POINTER;
  error->SetGUID(__uuidof(_clsMPU));
  error->SetSource(const_cast<LPOLESTR>(L"fliglaf.clsMPU"));
  error->SetDescription(const_cast<LPOLESTR>(what));
  if (SUCCEEDED(error.As(&info))) SetErrorInfo(0, info.Get());
  return E_POINTER;
}

}  // namespace

HRESULT MpuObject::Create(REFIID iid, void** object) noexcept {
  try {
    return platform::MakeObject<MpuObject>()->QueryInterface(iid, object);
  } catch (const std::system_error& error) {
    return error.code().value() < 0 ? error.code().value()
                                    : HRESULT_FROM_WIN32(static_cast<DWORD>(error.code().value()));
  } catch (const std::exception&) {
    return E_OUTOFMEMORY;
  }
}

HRESULT MpuObject::get_buflg(LONG* value) noexcept {
  if (value == nullptr) return RefuseNull(L"buflg: no place for the value was given");
  *value = mpu_.buflg;
  return S_OK;
}

HRESULT MpuObject::put_buflg(LONG value) noexcept {
  mpu_.buflg = value;
  return S_OK;
}

HRESULT MpuObject::get_exitpower(VARIANT_BOOL* value) noexcept {
  if (value == nullptr) return RefuseNull(L"exitpower: no place for the value was given");
  *value = mpu_.exitpower;
  return S_OK;
}

HRESULT MpuObject::put_exitpower(VARIANT_BOOL value) noexcept {
  mpu_.exitpower = value;
  return S_OK;
}

HRESULT MpuObject::runMpu4Prg(VARIANT_BOOL* usbenable) noexcept {
  if (usbenable == nullptr) return RefuseNull(L"runMpu4Prg: usbenable is a null reference");
  const ComPtr<MpuObject> alive(this);  // a message during the run may release the object
  platform::Win32Desktop& desktop = session_->desktop;
  if (desktop.on_quit) {  // called back from within a request, which is refused below
    mpu_.runMpu4Prg(*usbenable);
    return S_OK;
  }
  desktop.on_quit = [this] { mpu_.Stop(); };
  mpu_.runMpu4Prg(*usbenable);
  desktop.on_quit = nullptr;
  desktop.PassQuitOn();
  return S_OK;
}

HRESULT MpuObject::mpu4warn(unsigned char* no) noexcept {
  if (no == nullptr) return RefuseNull(L"mpu4warn: no is a null reference");
  const ComPtr<MpuObject> alive(this);
  mpu_.mpu4warn(*no);
  return S_OK;
}

HRESULT MpuObject::editfigmpu40() noexcept {
  const ComPtr<MpuObject> alive(this);
  mpu_.editfigmpu40();
  return S_OK;
}

HRESULT MpuObject::bufcommpu4(SHORT* num) noexcept {
  if (num == nullptr) return RefuseNull(L"bufcommpu4: num is a null reference");
  const ComPtr<MpuObject> alive(this);  // a box about a block that fails turns the message loop
  mpu_.bufcommpu4(*num);
  return S_OK;
}

HRESULT MpuObject::freesharebuffermpu4() noexcept {
  mpu_.freesharebuffermpu4();
  return S_OK;
}

HRESULT MpuObject::sinitmpu4() noexcept {
  mpu_.sinitmpu4();
  return S_OK;
}

HRESULT MpuObject::GetTypeInfoCount(UINT* count) noexcept {
  if (count == nullptr) return E_POINTER;
  *count = 1;
  return S_OK;
}

HRESULT MpuObject::GetTypeInfo(UINT index, LCID /*locale*/, ITypeInfo** info) noexcept {
  if (info == nullptr) return E_POINTER;
  *info = nullptr;
  if (index != 0) return DISP_E_BADINDEX;
  try {
    ComPtr<ITypeLib> library;
    const HRESULT status =
        LoadTypeLibEx(platform::ModulePath().c_str(), REGKIND_NONE, library.GetAddressOf());
    return FAILED(status) ? status : library->GetTypeInfoOfGuid(__uuidof(_clsMPU), info);
  } catch (const std::exception&) {
    return E_OUTOFMEMORY;
  }
}

HRESULT MpuObject::GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID /*locale*/,
                                 DISPID* ids) noexcept {
  if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  if (names == nullptr || ids == nullptr) return E_POINTER;
  return FindNames(names, count, ids);
}

HRESULT MpuObject::Invoke(DISPID id, REFIID iid, LCID /*locale*/, WORD kind, DISPPARAMS* parameters,
                          VARIANT* result, EXCEPINFO* /*exception*/,
                          UINT* argument_error) noexcept {
  if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  if (parameters == nullptr) return E_POINTER;
  const ComPtr<MpuObject> alive(this);
  return InvokeMember(*this, id, kind, *parameters, result, argument_error);
}

HRESULT MpuObject::InterfaceSupportsErrorInfo(REFIID iid) noexcept {
  return iid == __uuidof(_clsMPU) ? S_OK : S_FALSE;
}

}  // namespace fliglaf
