#include "host/com/components.h"

#include <array>
#include <string>

#include "platform/win32/module.h"
#include "platform/win32/variant.h"
#include "shared/text.h"

namespace fliglaf {
namespace {

constexpr wchar_t kIoHelper[] = L"IoHelper.IoHelper";
constexpr wchar_t kIoHelperVariable[] = L"FLIGLAF_IOHELPER";

std::int32_t NumberIn(VARIANT& result, const char* operation) {
  if (result.vt == VT_EMPTY) return 0;
  const HRESULT status = VariantChangeType(&result, &result, 0, VT_I4);
  if (FAILED(status)) throw ComponentError(operation, static_cast<std::uint32_t>(status));
  return result.lVal;
}

/// Where Windows looks for a host's libraries; failing that, beside this module: a script's host
/// lives in a folder of Windows.
HMODULE Load(const std::string& name) {
  const std::wstring file(name.begin(), name.end());
  if (HMODULE found = LoadLibraryW(file.c_str())) return found;
  const DWORD error = GetLastError();
  if (error == ERROR_MOD_NOT_FOUND) {
    const std::wstring module = platform::ModulePath();
    const std::wstring beside = module.substr(0, module.rfind(L'\\') + 1) + file;
    if (HMODULE found = LoadLibraryExW(beside.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {
      return found;
    }
    throw ComponentError(name + " is missing");
  }
  throw ComponentError(name + " cannot be loaded: error " + std::to_string(error) + " of Windows");
}

template <class Function>
void Find(HMODULE module, const std::string& file, const char* name, Function& function) {
  function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
  if (function == nullptr) throw ComponentError(file + " has no " + name);
}

bool MeansMissing(HRESULT status) {
  return status == CO_E_CLASSSTRING || status == REGDB_E_CLASSNOTREG ||
         status == CO_E_DLLNOTFOUND || status == HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND) ||
         status == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
}

}  // namespace

// Arguments go by reference: to the copies that this call holds.
template <class... Parameters, class... Values>
std::int32_t Components::Call(const char* name,
                              HRESULT (STDMETHODCALLTYPE _IoHelper::*method)(Parameters...),
                              Values... values) {
  NeedIoHelper();
  platform::Variant result;
  HRESULT status = S_OK;
  if (!helper_) {
    std::array<VARIANT, sizeof...(values)> arguments{};
    std::size_t place = arguments.size();
    (platform::PointAt(values, arguments[--place]), ...);
    status = CallByName(name, arguments, result);
  } else if constexpr (sizeof...(Parameters) > sizeof...(Values)) {
    status = (helper_.Get()->*method)(&values..., &result);
  } else {
    status = (helper_.Get()->*method)(&values...);
  }
  if (FAILED(status)) throw ComponentError(name, static_cast<std::uint32_t>(status));
  return NumberIn(result, name);
}

HRESULT Components::CallByName(const char* name, std::span<VARIANT> arguments, VARIANT& result) {
  auto known = names_.find(name);
  if (known == names_.end()) {
    std::wstring wide(name, name + std::string_view(name).size());
    LPOLESTR text = wide.data();
    DISPID id = DISPID_UNKNOWN;
    const HRESULT found =
        helper_by_name_->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(found)) return found;
    known = names_.emplace(name, id).first;
  }
  DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
  EXCEPINFO exception = {};
  const HRESULT status =
      helper_by_name_->Invoke(known->second, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                              &parameters, &result, &exception, nullptr);
  if (status != DISP_E_EXCEPTION) return status;
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrHelpFile);
  return FAILED(exception.scode) ? exception.scode : status;
}

void Components::NeedIoHelper() {
  if (helper_ || helper_by_name_) return;
  std::wstring prog_id = platform::EnvironmentText(kIoHelperVariable);
  if (prog_id.empty()) prog_id = kIoHelper;
  CLSID id = {};
  HRESULT status = CLSIDFromProgID(prog_id.c_str(), &id);
  platform::ComPtr<IDispatch> object;
  if (SUCCEEDED(status)) {
    status = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object));
  }
  if (MeansMissing(status)) throw ComponentError("IoHelper is missing");
  if (FAILED(status)) throw ComponentError("creation", static_cast<std::uint32_t>(status));
  if (FAILED(object.As(&helper_))) helper_by_name_ = std::move(object);
}

void Components::NeedUsbLibrary() {
  if (usbbulkread_ != nullptr) return;
  const std::string file = "qdnio.dll";
  usb_library_.reset(Load(file));
  Find(usb_library_.get(), file, "usbcomwrite", usbcomwrite_);
  Find(usb_library_.get(), file, "usbbulkread", usbbulkread_);
}

void Components::NeedParallelLibrary() {
  if (datstr_ != nullptr) return;
  const std::string file = "hxaio.dll";
  parallel_library_.reset(Load(file));
  Find(parallel_library_.get(), file, "datstr", datstr_);
}

void Components::EndRun() { Call("EndRun", &_IoHelper::EndRun); }

std::int32_t Components::SetVcc(std::int32_t millivolts) {
  return Call("SetVcc", &_IoHelper::SetVcc, LONG{millivolts});
}

std::int32_t Components::SetVpp(std::int32_t millivolts, std::uint8_t channel) {
  return Call("SetVpp", &_IoHelper::SetVpp, LONG{millivolts}, channel);
}

void Components::SetGndPin(std::uint8_t pin, std::uint8_t state) {
  Call("SetGndPin", &_IoHelper::SetGndPin, pin, state);
}

void Components::SetVccPin(std::uint8_t pin, std::uint8_t state) {
  Call("SetVccPin", &_IoHelper::SetVccPin, pin, state);
}

void Components::SetVppPin(std::uint8_t pin, std::uint8_t state) {
  Call("SetVppPin", &_IoHelper::SetVppPin, pin, state);
}

std::int32_t Components::SetOutputs(std::int32_t value) {
  return Call("SetOutputs", &_IoHelper::SetOutputs, LONG{value});
}

void Components::SignalPass(std::int32_t value) {
  Call("SignalPass", &_IoHelper::SignalPass, LONG{value});
}

void Components::SignalFail(std::int32_t value) {
  Call("SignalFail", &_IoHelper::SignalFail, LONG{value});
}

std::int32_t Components::OpenProgrammer() {
  return Call("OpenProgrammer", &_IoHelper::OpenProgrammer);
}

std::int32_t Components::WriteRegister(std::int32_t value, std::uint8_t register_number) {
  return Call("WriteRegister", &_IoHelper::WriteRegister, LONG{value}, register_number);
}

std::int32_t Components::ReadRegister(std::uint8_t register_number) {
  return Call("ReadRegister", &_IoHelper::ReadRegister, register_number);
}

std::int32_t Components::WriteLatch(std::int32_t value, std::uint8_t latch) {
  return Call("WriteLatch", &_IoHelper::WriteLatch, LONG{value}, latch);
}

std::int32_t Components::DelayMs(std::int32_t milliseconds) {
  return Call("DelayMs", &_IoHelper::DelayMs, LONG{milliseconds});
}

std::int32_t Components::ShortDelay(std::int32_t microseconds) {
  return Call("ShortDelay", &_IoHelper::ShortDelay, LONG{microseconds});
}

std::int32_t Components::QueueRegisterWrite(std::int32_t value, std::uint8_t register_number) {
  return Call("QueueRegisterWrite", &_IoHelper::QueueRegisterWrite, LONG{value}, register_number);
}

std::int32_t Components::FlushQueue() { return Call("FlushQueue", &_IoHelper::FlushQueue); }

std::int32_t Components::QueueDelay(std::int32_t microseconds) {
  return Call("QueueDelay", &_IoHelper::QueueDelay, LONG{microseconds});
}

void Components::ReportStartupFailure() {
  Call("ReportStartupFailure", &_IoHelper::ReportStartupFailure);
}

std::int32_t Components::SetFigMode(std::uint8_t mode) {
  return Call("SetFigMode", &_IoHelper::SetFigMode, mode);
}

std::int32_t Components::EndProgramming(std::int32_t page, std::int32_t zero, std::int32_t data,
                                        std::int32_t address) {
  return Call("EndProgramming", &_IoHelper::EndProgramming, LONG{page}, LONG{zero}, LONG{data},
              LONG{address});
}

std::int32_t Components::BlockTransfer(std::int32_t data, std::int32_t address,
                                       std::int32_t check_mode) {
  return Call("BlockTransfer", &_IoHelper::BlockTransfer, LONG{data}, LONG{address},
              static_cast<SHORT>(check_mode));
}

void Components::ResetInterface() { Call("ResetInterface", &_IoHelper::ResetInterface); }

void Components::usbcomwrite(std::span<const std::uint8_t> packet) {
  NeedUsbLibrary();
  usbcomwrite_(packet.data(), static_cast<std::int32_t>(packet.size()));
}

void Components::usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) {
  NeedUsbLibrary();
  usbbulkread_(destination.data(), static_cast<std::int32_t>(destination.size()), &status);
}

std::u16string Components::datstr(std::int32_t value, std::int32_t digits) {
  NeedParallelLibrary();
  std::string text(static_cast<std::size_t>(digits), ' ');
  datstr_(text.data(), value, digits);
  return Widen(text);
}

}  // namespace fliglaf
