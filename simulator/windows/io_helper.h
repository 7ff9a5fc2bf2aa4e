#pragma once

#include <windows.h>

#include <fliglaf_type_library.h>

#include "platform/win32/dispatch_object.h"

namespace fliglaf::simulator {

/// The helper object over the simulated bench. Late-bound calls go by the type library.
class IoHelper final : public platform::DispatchObject<_IoHelper> {
 public:
  static HRESULT Create(REFIID iid, void** object) noexcept;

  /// Throws what SimulatedComponents throws.
  IoHelper();
  ~IoHelper() override;

  STDMETHODIMP EndRun() noexcept override;
  STDMETHODIMP SetVcc(LONG* mV, VARIANT* result) noexcept override;
  STDMETHODIMP SetVpp(LONG* mV, BYTE* channel, VARIANT* result) noexcept override;
  STDMETHODIMP SetGndPin(BYTE* pin, BYTE* state) noexcept override;
  STDMETHODIMP SetVccPin(BYTE* pin, BYTE* state) noexcept override;
  STDMETHODIMP SetVppPin(BYTE* pin, BYTE* state) noexcept override;
  STDMETHODIMP SetOutputs(LONG* value, VARIANT* result) noexcept override;
  STDMETHODIMP SignalPass(LONG* value) noexcept override;
  STDMETHODIMP SignalFail(LONG* value) noexcept override;
  STDMETHODIMP OpenProgrammer(VARIANT* result) noexcept override;
  STDMETHODIMP WriteRegister(LONG* value, BYTE* number, VARIANT* result) noexcept override;
  STDMETHODIMP ReadRegister(BYTE* number, VARIANT* result) noexcept override;
  STDMETHODIMP WriteLatch(LONG* value, BYTE* latch, VARIANT* result) noexcept override;
  STDMETHODIMP DelayMs(LONG* ms, VARIANT* result) noexcept override;
  STDMETHODIMP ShortDelay(LONG* duration, VARIANT* result) noexcept override;
  STDMETHODIMP QueueRegisterWrite(LONG* value, BYTE* number, VARIANT* result) noexcept override;
  STDMETHODIMP FlushQueue(VARIANT* result) noexcept override;
  STDMETHODIMP QueueDelay(LONG* duration, VARIANT* result) noexcept override;
  STDMETHODIMP ReportStartupFailure() noexcept override;
  STDMETHODIMP SetFigMode(BYTE* mode, VARIANT* result) noexcept override;
  STDMETHODIMP EndProgramming(LONG* page, LONG* zero, LONG* data, LONG* address,
                              VARIANT* result) noexcept override;
  STDMETHODIMP BlockTransfer(LONG* data, LONG* address, SHORT* check_mode,
                             VARIANT* result) noexcept override;
  STDMETHODIMP ResetInterface() noexcept override;
};

}  // namespace fliglaf::simulator
