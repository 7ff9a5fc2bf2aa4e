#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <vector>

#include "simulator/chip.h"

namespace fliglaf::simulator {

/// Which socket pins supply the chip, and the supply it is made for in mV.
struct SupplyPins {
  std::vector<std::uint8_t> vcc;
  std::vector<std::uint8_t> gnd;
  std::vector<std::uint8_t> vpp = {};  ///< of the programming voltage, if it has any
  std::int32_t nominal_millivolts = 5000;
};

/// Sees what an instrument on the socket would.
class SocketWatch {
 public:
  SocketWatch() = default;
  virtual ~SocketWatch() = default;
  SocketWatch(const SocketWatch&) = delete;
  SocketWatch& operator=(const SocketWatch&) = delete;

  /// What is there now: the levels of the lines as the programmer reads them, with kVcc while the
  /// supply pins are on and the supply is not 0, kVpp while a pin has the programming voltage.
  virtual void Show(Lines levels) = 0;
};

/// The socket: supply and ground pins, and the chip in it, if any. The chip runs while all its
/// supply pins are on and the supply is within 20 % of what it is made for.
class Socket {
 public:
  /// `chip` may be null: an empty socket.
  Socket(Chip* chip, SupplyPins pins)
      : chip_(chip), sensitive_(chip != nullptr ? chip->sensitive() : 0), pins_(std::move(pins)) {}

  void SetSupply(std::int32_t millivolts);
  void SetVccPin(std::uint8_t pin, bool on);
  void SetGndPin(std::uint8_t pin, bool on);
  void SetVppPin(std::uint8_t pin, bool on);
  void AllOff();
  /// No supply, no programming voltage, no pin switched on.
  [[nodiscard]] bool off() const {
    return supply_ == 0 && vcc_on_.none() && gnd_on_.none() && vpp_on_.none();
  }
  /// Supplies the chip as it is made for.
  void PowerUp();

  /// Breaks the line on which the chip answers, whichever it is: what is read of it is always
  /// `high`.
  void StickAnswer(bool high) { answer_stuck_ = high; }

  /// Joins the programmer's input to `line`, on which the chip answers, whatever the programmer
  /// itself drives there: what an adapter does.
  void JoinInput(Lines line) { joined_input_ = line; }
  [[nodiscard]] Lines joined_input() const { return joined_input_; }

  /// Has `watch` see every change from now on.
  void Watch(SocketWatch& watch) { watch_ = &watch; }

  /// The lines may have changed: `levels` as the programmer drives them. Called for every write of
  /// a port; the chip is asked only where it can tell a difference.
  void Observe(Lines levels) {
    const Lines changed = levels ^ levels_;
    levels_ = levels;
    if ((changed & sensitive_) != 0) chip_->Observe(levels);
  }
  [[nodiscard]] bool watched() const { return watch_ != nullptr; }
  /// For the watch: `driven` as the programmer drives them, and the lines that it does not drive.
  void ShowLines(Lines driven, Lines released);
  /// The level of `line` as the chip drives it; low where it drives nothing.
  [[nodiscard]] bool Level(Lines line) const {
    if (answer_stuck_) return *answer_stuck_;
    return powered_ && (chip_->driven() & chip_->levels() & line) != 0;
  }

 private:
  using PinSet = std::bitset<256>;

  void Update();
  void ShowWatch();

  Chip* chip_;
  Lines sensitive_;   ///< of the chip; none without one
  Lines levels_ = 0;  ///< as last passed to Observe
  SupplyPins pins_;
  PinSet vcc_on_;
  PinSet gnd_on_;
  PinSet vpp_on_;
  std::int32_t supply_ = 0;
  bool supplied_ = false;  ///< with whatever voltage
  bool powered_ = false;
  bool vpp_at_chip_ = false;
  Lines joined_input_ = 0;
  std::optional<bool> answer_stuck_;
  SocketWatch* watch_ = nullptr;
  Lines driven_ = 0;  ///< by the programmer; followed for the watch only
  Lines released_ = 0;
};

}  // namespace fliglaf::simulator
