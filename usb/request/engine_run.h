// One request of the host while it runs: what the operations of both engines may use.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/desktop.h"
#include "platform/form.h"
#include "shared/shared_variables.h"
#include "usb/components/programmer.h"

namespace fliglaf {

/// Values of quorinprgresult(0).
namespace result {
inline constexpr std::uint8_t kSuccess = 0;
inline constexpr std::uint8_t kFailure = 1;
inline constexpr std::uint8_t kStopped = 2;
inline constexpr std::uint8_t kReadBackFails = 3;
inline constexpr std::uint8_t kTimeOut = 5;  ///< transient, between the watchdog and the bulk read
}  // namespace result

/// What a read-type pass does with each byte of the device: the operation code - 2. The codes 0 and
/// 1, which a host may ask for, give modes without a name, in which every byte is accepted.
enum class CheckMode : std::int16_t { kRead = 0, kVerify = 1, kBlankCheck = 2, kCompare = 3 };

class EngineRun {
 public:
  EngineRun(SharedVariables& variables, Programmer& programmer, platform::Desktop& the_desktop,
            platform::Form& the_window)
      : vars(variables), io(programmer), desktop(the_desktop), window(the_window) {}

  SharedVariables& vars;
  Programmer& io;
  platform::Desktop& desktop;
  platform::Form& window;

  /// First and last device address of the operation.
  std::int32_t RangeStart = 0;
  std::int32_t RangeEnd = 0;
  /// Milliseconds that an algorithm waited without the clock, added to the elapsed time.
  std::int32_t ExtraMs = 0;

  [[nodiscard]] std::uint8_t outcome() const { return vars.quorinprgresult[0]; }
  [[nodiscard]] bool stopped() const { return outcome() == result::kStopped; }

  /// The text of the user's language with that number.
  [[nodiscard]] std::u16string Text(int number) const;
  /// Appends to the log.
  void Log(std::u16string_view text) { vars.quorinMainRtstr.Append(0, text); }
  /// Writes the progress of `done` out of `whole` in percent, kept within 0 to 100; 0 when `whole`
  /// is 0.
  void Progress(std::int64_t done, std::int64_t whole);

  /// quorinwretry(0), kMostRetries at most: what a device refuses so often it will refuse for ever,
  /// and every attempt takes it a tenth of a second.
  static constexpr std::int16_t kMostRetries = 1000;
  [[nodiscard]] std::int32_t Retries() const {
    return vars.quorinwretry[0] < kMostRetries ? vars.quorinwretry[0] : kMostRetries;
  }

  /// quorinpwte(0) times `factor`, for the delay operations.
  [[nodiscard]] std::int32_t WriteTime(std::int32_t factor) const;
};

/// Throws RangeError when the indexes from `first` to `last` are more than the data buffer has and
/// more than any device has. Passes that only look at a device ask before they begin. Otherwise a
/// nonsensical range would keep them busy for hours.
void RequireData(const EngineRun& run, std::int64_t first, std::int64_t last);

/// Writes the progress of an operation that has come to `address` of the device.
void ProgressAt(EngineRun& run, std::int64_t address);

}  // namespace fliglaf
