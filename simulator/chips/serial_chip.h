#pragma once

#include <cstdint>
#include <vector>

#include "simulator/chips/timed_chip.h"
#include "simulator/serial_wiring.h"
#include "simulator/spi_port.h"

namespace fliglaf::simulator {

/// The serial end of a chip, which every chip with a serial interface has: supply, reset, select
/// and the byte port. It is in step when reset came to its listening level, or the select fell,
/// with the clock low; what is clocked before the oscillator runs is lost.
class SerialChip : public TimedChip {
 public:
  void Power(bool on) final;
  void Observe(Lines levels) final;
  [[nodiscard]] std::vector<Signal> Signals() const final;

 protected:
  /// Times in ns from which the interface listens: after its reset, and after the supply has come.
  struct StartUp {
    std::int64_t after_reset;
    std::int64_t after_power = 0;
  };

  SerialChip(const Clock& clock, const SerialWiring& wiring, const StartUp& start_up)
      : TimedChip(clock),
        wiring_(wiring),
        start_up_(start_up),
        framing_(wiring.reset | wiring.select | wiring.enable_from_chip) {}

  /// Supply or reset has changed: whatever the interface was at is forgotten, and so is the
  /// programming mode.
  virtual void Restart() = 0;
  /// A byte has come in. What Load is given goes out with the next one.
  virtual void TakeByte(std::uint8_t byte) = 0;
  virtual void Selected() {}
  virtual void Released() {}

  void Load(std::uint8_t byte) { port_.Load(byte); }

 private:
  void FramingMoved(Lines levels, Lines changed);
  void ResetMoved(Lines levels);
  void SelectMoved(Lines levels);
  [[nodiscard]] bool Listens(Lines levels) const {
    return ((levels & wiring_.reset) != 0) == wiring_.listens_high &&
           (levels & wiring_.select) == 0;
  }

  SerialWiring wiring_;
  StartUp start_up_;
  Lines framing_;  ///< reset, select, and what lets the answer through
  SpiPort port_;
  Lines seen_ = 0;
  bool powered_ = false;
  bool in_step_ = false;
  std::int64_t powered_at_ = 0;
  std::int64_t listens_from_ = 0;
};

}  // namespace fliglaf::simulator
