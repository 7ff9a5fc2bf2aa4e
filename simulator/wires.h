#pragma once

#include <cstdint>

#include "simulator/lines.h"
#include "simulator/socket.h"

namespace fliglaf::simulator {

/// The programmer's ports joined to the socket: every change of a port register is a change of
/// lines that the chip sees at once.
class Wires {
 public:
  explicit Wires(Socket& socket) : socket_(socket) {}

  void Preset(bool high) {
    ports_.Preset(high);
    Changed();
  }
  /// Port register `number`, 0 to 11.
  void Write(int number, std::uint8_t value) {
    ports_.Write(number, value);
    Changed();
  }
  /// The levels of the lines of port register `number` within `mask`, any of them high: an input as
  /// the chip drives it, an output as the programmer itself does.
  [[nodiscard]] bool Sample(int number, std::uint8_t mask) const {
    const Lines line = LinesOf(number, mask);
    if ((ports_.inputs() & line) == 0) return (ports_.outputs() & line) != 0;
    return socket_.Level(line);
  }

 private:
  void Changed() { socket_.Observe(ports_.outputs() & ~ports_.inputs()); }

  Socket& socket_;
  Ports ports_;
};

}  // namespace fliglaf::simulator
