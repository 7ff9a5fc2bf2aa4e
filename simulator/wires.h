#pragma once

#include <cstdint>

#include "simulator/clock.h"
#include "simulator/lines.h"
#include "simulator/socket.h"

namespace fliglaf::simulator {

/// The programmer's ports joined to the socket: every change of a port register is a change of
/// lines that the chip sees at once. A write then keeps the port for a while, so that no two of
/// them fall on the same time: what is written first is set up for what comes after it.
class Wires {
 public:
  static constexpr std::int64_t kPortWrite = 200;  ///< ns

  Wires(Clock& clock, Socket& socket) : clock_(clock), socket_(socket) {}

  void Preset(bool high) {
    ports_.Preset(high);
    Changed();
  }
  /// Has `watch` see the lines as they are now, and every change from now on.
  void Watch(SocketWatch& watch) {
    socket_.Watch(watch);
    Changed();
  }
  /// A port register, found once and written often, by something that keeps time itself.
  class Register {
   public:
    /// `number` 0 to 11; what is written to others goes nowhere.
    Register(Wires& wires, int number)
        : wires_(wires),
          side_(wires.ports_.SideOf(number)),
          all_(LinesOf(number, 0xFF)),
          shift_(number / 2 * 8 % 64) {}

    void Write(std::uint8_t value) {
      side_ = (side_ & ~all_) | (Lines{value} << shift_ & all_);
      wires_.Changed();
      wires_.clock_.Advance(kPortWrite);
    }

   private:
    Wires& wires_;
    Lines& side_;
    Lines all_;
    int shift_;
  };

  void Write(int number, std::uint8_t value) { Register(*this, number).Write(value); }
  /// Lines that are driven although their input mask is set, while this lives.
  class Driving {
   public:
    Driving(Wires& wires, int number, int mask) : wires_(wires) {
      wires.driven_inputs_ = LinesOf(number, static_cast<std::uint8_t>(mask));
    }
    ~Driving() { wires_.driven_inputs_ = 0; }
    Driving(const Driving&) = delete;
    Driving& operator=(const Driving&) = delete;

   private:
    Wires& wires_;
  };
  /// The levels of the lines of port register `number` within `mask`, any of them high: an input as
  /// the chip drives it, an output as the programmer itself does.
  [[nodiscard]] bool Sample(int number, std::uint8_t mask) const {
    const Lines line = LinesOf(number, mask);
    const bool output = (ports_.inputs() & line) == 0 && !socket_.input_joined();
    if (output) return (ports_.outputs() & line) != 0;
    return socket_.Level(line);
  }

 private:
  void Changed() {
    const Lines inputs = ports_.inputs() & ~driven_inputs_;
    socket_.Observe(ports_.outputs() & ~inputs);
    if (socket_.watched()) [[unlikely]] {
      socket_.ShowLines(ports_.outputs() & ~inputs, inputs);
    }
  }

  Clock& clock_;
  Socket& socket_;
  Ports ports_;
  Lines driven_inputs_ = 0;
};

}  // namespace fliglaf::simulator
