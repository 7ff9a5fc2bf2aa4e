#pragma once

#include <windows.h>

#include <fliglaf_type_library.h>
#include <ocidl.h>

#include "host/cls_mpu.h"
#include "host/com/server.h"
#include "platform/win32/com_object.h"

namespace fliglaf {

/// clsMPU as COM sees it: the dual interface and its late-bound side.
class MpuObject final : public platform::ComObject<_clsMPU, ISupportErrorInfo> {
 public:
  /// For the class factory; the HRESULT says what failed.
  static HRESULT Create(REFIID iid, void** object) noexcept;

  MpuObject() : mpu_(session_->library) {}

  STDMETHODIMP get_buflg(LONG* value) noexcept override;
  STDMETHODIMP put_buflg(LONG value) noexcept override;
  STDMETHODIMP get_exitpower(VARIANT_BOOL* value) noexcept override;
  STDMETHODIMP put_exitpower(VARIANT_BOOL value) noexcept override;
  STDMETHODIMP runMpu4Prg(VARIANT_BOOL* usbenable) noexcept override;
  STDMETHODIMP mpu4warn(unsigned char* no) noexcept override;
  STDMETHODIMP editfigmpu40() noexcept override;
  STDMETHODIMP bufcommpu4(SHORT* num) noexcept override;
  STDMETHODIMP freesharebuffermpu4() noexcept override;
  STDMETHODIMP sinitmpu4() noexcept override;

  STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override;
  STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) noexcept override;
  STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                             DISPID* ids) noexcept override;
  STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD kind, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception,
                      UINT* argument_error) noexcept override;

  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) noexcept override;

 private:
  SessionUse session_;
  clsMPU mpu_;
};

}  // namespace fliglaf
