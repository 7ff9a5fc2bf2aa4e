#include "host/com/client.h"

#include <windows.h>

#include <fliglaf_type_library.h>
#include <stdexcept>
#include <string>

#include <fmt/format.h>

#include "platform/win32/com_object.h"

namespace fliglaf {
namespace {

void Check(HRESULT status, const char* what) {
  if (FAILED(status)) {
    throw std::runtime_error(fmt::format("fliglaf.clsMPU: {}: error 0x{:08X} of Windows", what,
                                         static_cast<std::uint32_t>(status)));
  }
}

/// COM on this thread, in an apartment of its own.
class Apartment {
 public:
  Apartment() { Check(CoInitialize(nullptr), "COM cannot be used"); }
  ~Apartment() { CoUninitialize(); }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;
};

}  // namespace

struct MpuClient::Object {
  Apartment apartment;
  platform::ComPtr<_clsMPU> mpu;
};

MpuClient::MpuClient() : object_(std::make_unique<Object>()) {
  CLSID id = {};
  Check(CLSIDFromProgID(L"fliglaf.clsMPU", &id), "not registered, and in no manifest");
  Check(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object_->mpu)),
        "the object cannot be made");
}

MpuClient::~MpuClient() = default;

void MpuClient::bufcommpu4(std::int16_t instance) {
  Check(object_->mpu->bufcommpu4(&instance), "bufcommpu4");
}

void MpuClient::runMpu4Prg(std::int16_t usbenable) {
  Check(object_->mpu->runMpu4Prg(&usbenable), "runMpu4Prg");
}

}  // namespace fliglaf
