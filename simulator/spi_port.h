#pragma once

#include <cstdint>

namespace fliglaf::simulator {

/// A chip's end of a serial interface in mode 0: a bit is taken in at the rising clock edge, the
/// next one put out at the falling edge, bit 7 first. Pure state, no lines.
class SpiPort {
 public:
  /// Forgets a byte that is half done.
  void Reset() { *this = SpiPort{}; }

  /// A rising clock edge; true when it completed a byte.
  bool Rise(bool data_in) {
    in_ = in_ << 1 | (data_in ? 1U : 0U);
    ++bits_;
    return bits_ % 8 == 0;
  }
  /// A falling clock edge.
  void Fall() {
    data_out_ = (out_ & 0x80U) != 0;
    out_ <<= 1;
  }

  /// The byte that was completed last.
  [[nodiscard]] std::uint8_t received() const { return static_cast<std::uint8_t>(in_); }
  /// The byte to put out next, given when a byte has been completed.
  void Load(std::uint8_t byte) { out_ = byte; }
  [[nodiscard]] bool data_out() const { return data_out_; }

 private:
  unsigned in_ = 0;
  unsigned out_ = 0;
  unsigned bits_ = 0;
  bool data_out_ = false;
};

}  // namespace fliglaf::simulator
