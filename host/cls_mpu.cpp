#include "host/cls_mpu.h"

#include <exception>

#include "host/factory_settings.h"
#include "host/memory_map.h"
#include "usb/request/engine_run.h"

namespace fliglaf {
namespace {

constexpr std::uint8_t kMapNumberBits = 0x7F;

/// The host's boundary: a method that fails ends quietly.
template <class Body>
void Quietly(const Body& body) noexcept {
  try {
    body();
  } catch (const std::exception&) {  // NOLINT: the host learns it from result and log
  }
}

}  // namespace

clsMPU::clsMPU(Library& library) : library_(library), vars_(std::make_shared<SharedVariables>()) {}

clsMPU::~clsMPU() { library_.Forget(this); }

void clsMPU::runMpu4Prg(std::int16_t& usbenable) noexcept {
  Quietly([this, usbenable] { library_.RunRequest(vars_, usbenable); });
}

void clsMPU::Stop() noexcept {
  Quietly([this] { vars_->quorinprgresult[0] = result::kStopped; });
}

void clsMPU::mpu4warn(std::uint8_t& no) noexcept {
  no &= kMapNumberBits;
  Quietly([this, no] { ShowMemoryMap(*vars_, library_.desktop(), no); });
}

void clsMPU::editfigmpu40() noexcept {
  Quietly([this] { library_.WhenIdle(this, [this] { library_.EditConfiguration(vars_); }); });
}

void clsMPU::bufcommpu4(std::int16_t& num) noexcept {
  Quietly([this, num] { library_.WhenIdle(this, [this, num] { OpenVariables(num); }); });
}

void clsMPU::freesharebuffermpu4() noexcept {
  Quietly([this] { library_.WhenIdle(this, [this] { vars_->ReleaseDataBuffers(); }); });
}

void clsMPU::sinitmpu4() noexcept {
  Quietly([this] { PresetConfiguration(*vars_); });
}

void clsMPU::OpenVariables(std::int16_t instance) {
  const auto report = [this] {
    library_.desktop().MsgBox(platform::box_style::kOkOnly, u"fliglaf",
                              u"Unable to create memory mapped file");
  };
  vars_->OpenMainGroup(instance, report);
  vars_->OpenDataBuffers(vars_->DataBufferLength(), report);
  buflg = vars_->quorinbuflength[0];
}

}  // namespace fliglaf
