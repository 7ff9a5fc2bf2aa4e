#pragma once

#include <array>
#include <cstdint>

#include "simulator/wires.h"
#include "usb/components/shifter_config.h"

namespace fliglaf::simulator {

/// The programmer's shifter: clocks bytes over the lines at 1 MHz. It drives its clock, and its
/// data output while it sends, although they may be inputs by their mask.
class Shifter {
 public:
  static constexpr std::int64_t kHalfBit = 500;  ///< ns

  explicit Shifter(Wires& wires) : wires_(wires) {}

  /// One byte out, bit 7 first.
  void OutHighFirst(const ShifterConfig& config, std::uint8_t value);
  /// A group of bits out, bit 0 first: 6 or 8 of them.
  void OutLowFirst(const ShifterConfig& config, std::uint8_t value);
  /// The last `count` bits of a scan, 1 to 8, bit 7 first, with TMS high on the last of them.
  void OutLast(const ShifterConfig& config, std::uint8_t value, int count);
  /// A step of a scan: one pulse with TMS high, then `low_pulses` with TMS low.
  void Walk(const ShifterConfig& config, int low_pulses);
  /// The low `count` bits out, bit 0 first.
  void OutLowBits(const ShifterConfig& config, std::uint8_t value, int count);
  /// One byte in, bit 7 first, with the data output low.
  [[nodiscard]] std::uint8_t In(const ShifterConfig& config);

 private:
  void Rest(const ShifterConfig& config);
  void ClockBit(const ShifterConfig& config, std::uint8_t high);

  Wires& wires_;
};

}  // namespace fliglaf::simulator
