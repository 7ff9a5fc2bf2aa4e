#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/chip.h"
#include "simulator/clock.h"
#include "simulator/socket.h"

namespace fliglaf::simulator {

/// What happens at the socket as a Value Change Dump (IEEE 1364): one-bit wires named by their
/// roles, with vcc and vpp after them, in virtual time. Plain enough for readers that know no more
/// than that: levels are 0 and 1, comments stand in the header only.
class Waveform : public SocketWatch {
 public:
  /// The unit of time stamps in ns. Port writes are further apart than that. Logic analysers take a
  /// sample for every unit, so they read a run ten times as fast as if it were 10 ns.
  static constexpr std::int64_t kTick = 100;

  /// `title` goes into the header. `sink` is given the text piece by piece; it and `clock` have to
  /// outlive the waveform.
  Waveform(const Clock& clock, std::span<const Signal> signals, std::string_view title,
           std::function<void(std::string_view)> sink);

  void Show(Lines levels) override;
  /// Writes the time at which it ends, so that the last levels last, and hands over the rest.
  void End();

 private:
  void WriteHeader(std::string_view title);
  void WriteTime(std::int64_t tick);
  void WriteLevel(std::size_t signal);
  void HandOver();

  const Clock& clock_;
  std::vector<Signal> signals_;
  std::function<void(std::string_view)> sink_;
  std::string text_;
  Lines watched_ = 0;
  Lines unknown_ = 0;  ///< not shown yet
  Lines shown_ = 0;
  std::int64_t tick_ = -1;
};

}  // namespace fliglaf::simulator
