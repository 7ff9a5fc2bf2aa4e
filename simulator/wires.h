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
  /// Writes a port register, which keeps the port for `hold` ns.
  void Write(int number, std::uint8_t value, std::int64_t hold = kPortWrite) {
    ports_.Write(number, value);
    Changed();
    clock_.Advance(hold);
  }
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
    const Lines input = ports_.inputs() | socket_.joined_input();
    if ((input & line) == 0) return (ports_.outputs() & line) != 0;
    return socket_.Level(line);
  }

 private:
  void Changed() {
    const Lines driven = ~ports_.inputs() | driven_inputs_;
    socket_.Observe(ports_.outputs() & driven);
    if (socket_.watched()) [[unlikely]] {
      socket_.ShowLines(ports_.outputs() & driven, ~driven);
    }
  }

  Clock& clock_;
  Socket& socket_;
  Ports ports_;
  Lines driven_inputs_ = 0;
};

}  // namespace fliglaf::simulator
