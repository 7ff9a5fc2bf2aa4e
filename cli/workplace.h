#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "cli/host_session.h"
#include "cli/options.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// How the programmer's start ended, as far as this side of the library can tell.
enum class StartUp { kDone, kNotFound, kWrongAdapter, kNoSupply, kNotTold };

/// Whether a request goes into the record that the options may ask for: one request of a call does.
enum class Recorded { kYes, kNo };

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

  /// Writes what the run leaves behind, whatever became of it: the chip's contents, the
  /// waveform and the record.
  /// Throws ImageError.
  virtual void Keep() = 0;
};

/// The workplace that the options describe, for the blocks of `instance`. Throws UsageError or
/// ImageError for what they ask for and cannot be had. `options` outlives it.
[[nodiscard]] std::unique_ptr<Workplace> MakeWorkplace(const Options& options,
                                                       const DeviceProfile& device,
                                                       std::int16_t instance);

/// True where a programmer can take the place of the simulated bench.
[[nodiscard]] bool HasHardware();

}  // namespace fliglaf::cli
