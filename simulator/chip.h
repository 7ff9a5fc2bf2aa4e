// A chip in the socket, as the programmer's lines meet it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/lines.h"

namespace fliglaf::simulator {

/// A part of what a chip keeps without power.
struct MemoryArea {
  std::string name;
  std::span<std::uint8_t> bytes;
  std::uint8_t erased = 0xFF;   ///< value of a byte of a new chip
  std::uint8_t largest = 0xFF;  ///< value that a byte can have
  /// The bytes of a new chip where they are not all alike, else empty.
  std::vector<std::uint8_t> factory = {};

  [[nodiscard]] std::vector<std::uint8_t> Fresh() const {
    return factory.empty() ? std::vector<std::uint8_t>(bytes.size(), erased) : factory;
  }
};

/// A line by what it is for the chip.
struct Signal {
  std::string_view role;  ///< tck, tms, tdi, tdo; reset, cs, sck, mosi, miso; clk, data
  Lines line;
};

/// A memory cell that always reads the same.
struct StuckBit {
  std::uint32_t address = 0;
  int bit = 0;  ///< 0 to 7
  bool value = false;
};

/// One class a chip, with its own state. A chip sees lines, supply and time, and nothing of the
/// algorithm.
class Chip {
 public:
  Chip() = default;
  virtual ~Chip() = default;
  Chip(const Chip&) = delete;
  Chip& operator=(const Chip&) = delete;

  /// The supply has come or gone. A write in progress completes all the same.
  virtual void Power(bool on) = 0;
  /// The programming voltage has come to its pin, or gone.
  virtual void ProgrammingVoltage(bool /*on*/) {}
  /// A line of sensitive() has changed: `levels` of all lines as the programmer drives them, 0
  /// where it does not.
  virtual void Observe(Lines levels) = 0;
  /// The lines at whose changes it does something: clocks, and what frames or gates them. It takes
  /// the levels of the others then.
  [[nodiscard]] Lines sensitive() const { return sensitive_; }
  /// The lines that the chip drives, and their levels.
  [[nodiscard]] Lines driven() const { return driven_; }
  [[nodiscard]] Lines levels() const { return levels_; }
  /// How often the programmer drove a line high that the chip held low.
  [[nodiscard]] virtual std::uint64_t conflicts() const { return 0; }
  /// The lines of its programming interface.
  [[nodiscard]] virtual std::vector<Signal> Signals() const = 0;

  /// What it keeps without power, in the order in which it is saved.
  [[nodiscard]] virtual std::vector<MemoryArea> Memory() = 0;
  /// Breaks a cell of the main memory; the address counts from 0.
  virtual void Break(const StuckBit& stuck) = 0;

 protected:
  Lines sensitive_ = ~Lines{0};
  Lines driven_ = 0;
  Lines levels_ = 0;
};

}  // namespace fliglaf::simulator
