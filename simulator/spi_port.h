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
    in_ = static_cast<std::uint8_t>(in_ << 1 | (data_in ? 1 : 0));
    bits_ = (bits_ + 1) % 8;
    return bits_ == 0;
  }
  /// A falling clock edge.
  void Fall() {
    data_out_ = (out_ & 0x80) != 0;
    out_ = static_cast<std::uint8_t>(out_ << 1);
  }

  /// The byte that was completed last.
  [[nodiscard]] std::uint8_t received() const { return in_; }
  /// The byte to put out next, given when a byte has been completed.
  void Load(std::uint8_t byte) { out_ = byte; }
  [[nodiscard]] bool data_out() const { return data_out_; }

 private:
  std::uint8_t in_ = 0;
  std::uint8_t out_ = 0;
  int bits_ = 0;
  bool data_out_ = false;
};

}  // namespace fliglaf::simulator
