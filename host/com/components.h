// The components of the programmer's software, as they are installed beside the host.
#pragma once

#include <windows.h>

#include <fliglaf_type_library.h>
#include <map>
#include <memory>
#include <string_view>
#include <type_traits>

#include "platform/win32/com_object.h"
#include "usb/components/programmer.h"

namespace fliglaf {

/// Finds each component on first use and keeps it until it is destroyed. A component that is not
/// installed makes the call that needs it throw ComponentError ("qdnio.dll is missing").
class Components : public Programmer {
 public:
  void EndRun() override;
  std::int32_t SetVcc(std::int32_t millivolts) override;
  std::int32_t SetVpp(std::int32_t millivolts, std::uint8_t channel) override;
  void SetGndPin(std::uint8_t pin, std::uint8_t state) override;
  void SetVccPin(std::uint8_t pin, std::uint8_t state) override;
  void SetVppPin(std::uint8_t pin, std::uint8_t state) override;
  std::int32_t SetOutputs(std::int32_t value) override;
  void SignalPass(std::int32_t value) override;
  void SignalFail(std::int32_t value) override;
  std::int32_t OpenProgrammer() override;
  std::int32_t WriteRegister(std::int32_t value, std::uint8_t register_number) override;
  std::int32_t ReadRegister(std::uint8_t register_number) override;
  std::int32_t WriteLatch(std::int32_t value, std::uint8_t latch) override;
  std::int32_t DelayMs(std::int32_t milliseconds) override;
  std::int32_t ShortDelay(std::int32_t microseconds) override;
  std::int32_t QueueRegisterWrite(std::int32_t value, std::uint8_t register_number) override;
  std::int32_t FlushQueue() override;
  std::int32_t QueueDelay(std::int32_t microseconds) override;
  void ReportStartupFailure() override;
  std::int32_t SetFigMode(std::uint8_t mode) override;
  std::int32_t EndProgramming(std::int32_t page, std::int32_t zero, std::int32_t data,
                              std::int32_t address) override;
  std::int32_t BlockTransfer(std::int32_t data, std::int32_t address,
                             std::int32_t check_mode) override;
  void ResetInterface() override;
  void usbcomwrite(std::span<const std::uint8_t> packet) override;
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override;
  [[nodiscard]] std::u16string datstr(std::int32_t value, std::int32_t digits) override;

 private:
  struct FreeModule {
    void operator()(HMODULE module) const { FreeLibrary(module); }
  };
  using LoadedLibrary = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeModule>;

  /// Calls an operation; the result is 0 where it has none.
  template <class... Parameters, class... Values>
  std::int32_t Call(const char* name, HRESULT (STDMETHODCALLTYPE _IoHelper::*method)(Parameters...),
                    Values... values);
  /// Calls an operation by its name; `arguments` in automation's order, the last one first.
  HRESULT CallByName(const char* name, std::span<VARIANT> arguments, VARIANT& result);

  void NeedIoHelper();
  void NeedUsbLibrary();
  void NeedParallelLibrary();

  /// The helper object: by its own interface, or by names where it does not know that one.
  platform::ComPtr<_IoHelper> helper_;
  platform::ComPtr<IDispatch> helper_by_name_;
  std::map<std::string_view, DISPID> names_;

  LoadedLibrary usb_library_;
  void(__stdcall* usbcomwrite_)(const std::uint8_t* buffer, std::int32_t length) = nullptr;
  void(__stdcall* usbbulkread_)(std::uint8_t* destination, std::int32_t count,
                                std::uint8_t* status) = nullptr;
  LoadedLibrary parallel_library_;
  void(__stdcall* datstr_)(char* text, std::int32_t value, std::int32_t digits) = nullptr;
};

}  // namespace fliglaf
