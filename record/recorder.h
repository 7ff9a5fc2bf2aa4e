// Records a call of the host object: decorators of a programmer and of a desktop that write down
// what passes through them.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/desktop.h"
#include "record/snapshot.h"
#include "record/traffic.h"
#include "shared/shared_variables.h"
#include "usb/components/funnel_programmer.h"
#include "usb/components/programmer.h"

namespace fliglaf::record {

class RecordingProgrammer : public FunnelProgrammer {
 public:
  RecordingProgrammer(Programmer& inner, Traffic& traffic) : inner_(inner), traffic_(traffic) {}

  void usbcomwrite(std::span<const std::uint8_t> packet) override;
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override;
  [[nodiscard]] std::u16string datstr(std::int32_t value, std::int32_t digits) override;

 protected:
  std::int32_t Perform(Op op, const Arguments& arguments) override;

 private:
  Programmer& inner_;
  Traffic& traffic_;
};

class RecordingDesktop : public platform::Desktop {
 public:
  RecordingDesktop(platform::Desktop& inner, SharedVariables& vars, Traffic& traffic)
      : inner_(inner), vars_(vars), traffic_(traffic) {}

  int MsgBox(int style, std::u16string_view title, std::u16string_view prompt) override;
  void DoEvents() override;
  [[nodiscard]] std::u16string LoadText(std::int64_t number) override;
  [[nodiscard]] double SecondsSinceMidnight() override;

  /// Forgets which times were asked for.
  void StartClock() { first_time_ = last_time_ = {}; }
  /// The log as it would be if the clock had stood still since StartClock.
  [[nodiscard]] std::u16string AtStandingClock(std::u16string_view log) const;

 private:
  /// A timer of the library, and the one of the wrapped desktop that ticks for it.
  struct Stand {
    Stand(platform::Timer& the_timer, platform::Desktop& desktop, std::function<void()> on_tick)
        : timer(&the_timer), inner(desktop, the_timer.name(), std::move(on_tick)) {}

    platform::Timer* timer;
    platform::Timer inner;
  };

  void StartTimer(platform::Timer& timer) override;
  void StopTimer(platform::Timer& timer) override;
  [[nodiscard]] Stand* Find(const platform::Timer& timer);

  platform::Desktop& inner_;
  SharedVariables& vars_;
  Traffic& traffic_;
  std::deque<Stand> stands_;
  bool watchdog_ticked_ = false;
  std::optional<double> first_time_;
  std::optional<double> last_time_;
};

/// Give `programmer()` and `desktop()` to the library in place of the wrapped ones, and put its
/// call between Begin and End. What it is given outlives it.
class Recorder {
 public:
  /// The record is appended to `out`. `vars` are the variables that the library uses: open, and in
  /// the same memory, as bulk reads are recognised by their address.
  Recorder(Programmer& programmer, platform::Desktop& desktop, SharedVariables& vars,
           std::string& out);

  [[nodiscard]] Programmer& programmer() { return programmer_; }
  [[nodiscard]] platform::Desktop& desktop() { return desktop_; }

  /// Starts a record with the variables as they are. `call` is that of the host object which comes
  /// next, as text: "runMpu4Prg(-1)".
  void Begin(std::string_view call);
  /// Ends the record. False when it is not complete; problem() then tells why.
  [[nodiscard]] bool End();
  [[nodiscard]] const std::string& problem() const { return problem_; }

 private:
  SharedVariables& vars_;
  std::string& out_;
  Traffic traffic_;
  RecordingProgrammer programmer_;
  RecordingDesktop desktop_;
  Snapshot before_;
  std::string problem_;
};

}  // namespace fliglaf::record
