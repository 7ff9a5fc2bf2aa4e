#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/portable/time_source.h"
#include "simulator/chip.h"
#include "simulator/clock.h"
#include "simulator/config_word_wiring.h"
#include "simulator/faulty_programmer.h"
#include "simulator/jtag_cable.h"
#include "simulator/simulated_programmer.h"
#include "simulator/socket.h"

namespace fliglaf::simulator {

/// A part with configuration words, and the socket for it.
struct ConfigWordPart {
  ConfigWordSocket socket = {};
  int words = 1;           ///< 1 or 2
  bool vpp_first = false;  ///< the programming voltage comes ahead of the supply
};

/// The part that goes into the socket.
struct ChipDescription {
  std::uint8_t family = 0;  ///< 1 to 16
  std::uint8_t option = 0;  ///< variant within the family
  std::uint32_t flash_bytes = 0;
  std::uint32_t page_bytes = 0;
  std::uint32_t eeprom_bytes = 0;
  std::array<std::uint8_t, 3> signature{};
  SupplyPins supply;
  std::int64_t byte_write_us = 0;
  std::int64_t page_write_us = 0;
  std::int64_t eeprom_write_us = 0;
  std::int64_t config_write_us = 0;  ///< of a fuse or lock byte
  std::int64_t erase_ms = 0;
  std::int64_t lock_write_ms = 0;
  std::int64_t start_up_ms = 0;  ///< from the supply to the first instruction
  std::optional<ConfigWordPart> config_words = std::nullopt;  ///< then it is nothing else
};

/// What is to go wrong.
struct Faults {
  FaultPlan programmer = {};
  bool no_chip = false;
  std::vector<StuckBit> stuck_bits = {};
  std::optional<bool> answer_stuck = std::nullopt;  ///< the line on which the chip answers
};

/// A simulated bench: a programmer on USB, a socket, a chip in it, and the time that all of them
/// share.
class Bench : public platform::TimeSource {
 public:
  /// True when there is a chip model for the family.
  [[nodiscard]] static bool Supports(std::uint8_t family);

  /// Throws std::invalid_argument for a family without a chip model. `instance`: see
  /// SimulatedProgrammer. In real time every call takes as long as it would on the bench.
  Bench(const ChipDescription& description, std::int16_t instance, const Faults& faults,
        bool real_time = false);

  [[nodiscard]] SimulatedProgrammer& programmer() { return programmer_; }
  /// The programmer as a host meets it, behind its faults.
  [[nodiscard]] Programmer& io() { return *io_; }
  /// Null for a programmer that has none.
  [[nodiscard]] const PlannedFaults* faults() const { return faults_.get(); }
  [[nodiscard]] Chip& chip() { return *chip_; }
  [[nodiscard]] const Clock& clock() const { return clock_; }
  /// True when a chip may be taken out of the socket.
  [[nodiscard]] bool socket_is_off() const { return socket_.off(); }
  /// Has `watch` see the socket as it is now, and every change from now on.
  void Watch(SocketWatch& watch) { programmer_.Watch(watch); }
  /// Takes the programmer off the chip and puts a cable in its place; null for a chip that has no
  /// JTAG lines. The bench outlives it.
  [[nodiscard]] std::unique_ptr<JtagCable> AttachJtagCable();

  [[nodiscard]] std::int64_t Now() const override { return clock_.now(); }
  [[nodiscard]] std::optional<std::int64_t> NextEvent() const override {
    return time_->NextEvent();
  }
  void WaitUntil(std::int64_t time) override { time_->WaitUntil(time); }

 private:
  Clock clock_;
  std::unique_ptr<Chip> chip_;
  Socket socket_;
  const JtagWiring* jtag_wiring_;
  SimulatedProgrammer programmer_;
  std::unique_ptr<PlannedFaults> faults_;
  Programmer* io_ = &programmer_;
  platform::TimeSource* time_ = &programmer_;
};

}  // namespace fliglaf::simulator
