// What the engine's window keeps for the device algorithms: which lines of the programmer are
// which. The power-up of a family fills in what belongs to it; the rest keeps what it had, 0 at
// first.
#pragma once

#include <cstdint>

namespace fliglaf {

/// The four JTAG lines on a port of the programmer; the two-line families use the port and the bits
/// that stay high.
struct JtagLines {
  /// Bits that are part of every write of the port, a buffer's enable for example.
  std::uint8_t fixedBitsA = 0;
  std::uint8_t fixedBitsB = 0;
  /// The port's register; the one above it is its input mask.
  std::uint8_t lineRegister = 0;
  /// What each line adds to the port: 0 or its bit.
  std::uint8_t tdiState = 0;
  std::uint8_t tckState = 0;
  std::uint8_t tmsState = 0;
  std::uint8_t tdiMask = 0;
  std::uint8_t tdoMask = 0;
  std::uint8_t tmsMask = 0;
  std::uint8_t tckMask = 0;

  [[nodiscard]] std::uint8_t fixed() const {
    return static_cast<std::uint8_t>(fixedBitsA | fixedBitsB);
  }
  [[nodiscard]] std::uint8_t levels() const {
    return static_cast<std::uint8_t>(fixed() | tdiState | tckState | tmsState);
  }
};

/// Clock and data line of families 12 and 16, on the port of JtagLines and with its fixedBitsA:
/// what a reset pulse drives.
struct TwoWireLines {
  /// What each line adds to the port: 0 or its bit.
  std::uint8_t clockState = 0;
  std::uint8_t dataState = 0;
  std::uint8_t clockMask = 0;
  std::uint8_t dataMask = 0;
  /// Further bits of the port, of the options 30 and 31 only.
  std::uint8_t extraBits = 0;
};

/// The instructions that select the four flash registers of families 8 to 11.
struct FlashRegs {
  std::int32_t regControl = 0;
  std::int32_t regData = 0;
  std::int32_t regAddress = 0;
  std::int32_t regScale = 0;
  /// Bits of an address.
  std::int16_t addressWidth = 0;
};

/// The lines of the window, which all families share: what one loads stays for the next.
struct WindowLines {
  JtagLines jtag;
  TwoWireLines two_wire;
  FlashRegs flash;
};

}  // namespace fliglaf
