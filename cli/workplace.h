#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/host_session.h"
#include "cli/operation_options.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// How the programmer's start ended, as far as this side of the library can tell.
enum class StartUp { kDone, kNotFound, kWrongAdapter, kNoSupply, kNotTold };

/// Which request of a call the record holds that the options may ask for: the one with kYes, or
/// else the last that ran.
enum class Recorded { kYes, kIfNoOther };

/// Where requests are carried out: the library, with the programmer and the chip that it works on.
class Workplace {
 public:
  Workplace() = default;
  virtual ~Workplace() = default;
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;

  /// Called while a request runs, at each turn of its message loop. True when it has asked for
  /// something.
  std::function<bool()> on_turn;
  /// Answers the library's message boxes: one of platform::box_answer.
  std::function<int(int style, std::u16string_view title, std::u16string_view prompt)> on_box;

  /// Has the library carry out the request that `session` describes.
  virtual void Run(HostSession& session, Recorded recorded) = 0;
  [[nodiscard]] virtual StartUp start_up() const = 0;

  /// Writes what the runs leave behind, however they ended: the chip's contents, the waveform and
  /// the record. Returns what could not be written, as "FILE: reason".
  [[nodiscard]] virtual std::vector<std::string> Keep() = 0;
};

/// The workplace that the options describe, for the blocks of `instance`. Throws UsageError,
/// BenchError or ImageError for what is not available. `options` outlives it.
[[nodiscard]] std::unique_ptr<Workplace> MakeWorkplace(const OperationOptions& options,
                                                       const DeviceProfile& device,
                                                       std::int16_t instance);

/// True where a programmer can take the place of the simulated bench.
[[nodiscard]] bool HasHardware();

}  // namespace fliglaf::cli
