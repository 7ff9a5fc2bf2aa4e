#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "host/library.h"
#include "shared/shared_variables.h"

namespace fliglaf {

/// The library's one public object. Everything but its two data members passes through the shared
/// variables. No method throws: quorinprgresult(0) and the log say that a request failed.
class clsMPU {
 public:
  explicit clsMPU(Library& library);
  /// Releases the variables. Those of a running request go when it has ended.
  ~clsMPU();
  clsMPU(const clsMPU&) = delete;
  clsMPU& operator=(const clsMPU&) = delete;

  /// quorinbuflength(0) as bufcommpu4 found it.
  std::int32_t buflg = 0;
  /// Kept for the host: 0 or -1.
  std::int16_t exitpower = 0;

  /// Runs the request of the host: on the USB engine when `usbenable` is -1, else on the
  /// parallel-port engine. Returns when the whole request has run; at once when one is running
  /// already.
  void runMpu4Prg(std::int16_t& usbenable) noexcept;

  /// Asks the request that this object runs to stop, as the host does through the shared variables.
  void Stop() noexcept;

  /// Clears bit 7 of `no`, then shows the memory map that belongs to it: 30 or 31, none for others.
  void mpu4warn(std::uint8_t& no) noexcept;

  /// Opens the configuration editor of the device family, a window that outlives the call and, if
  /// need be, the object; one that is open comes to the front. During a request: when it has ended.
  void editfigmpu40() noexcept;

  /// Opens the shared variables of instance `num`, the data buffers included; closes those that are
  /// open first. During a request: when it has ended.
  void bufcommpu4(std::int16_t& num) noexcept;

  /// Releases the data buffers. During a request: when it has ended.
  void freesharebuffermpu4() noexcept;

  /// Presets the configuration area of the data buffer with the factory values of the device.
  void sinitmpu4() noexcept;

 private:
  void OpenVariables(std::int16_t instance);

  Library& library_;
  std::shared_ptr<SharedVariables> vars_;
};

}  // namespace fliglaf
