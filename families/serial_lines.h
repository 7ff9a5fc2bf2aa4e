// The lines of serial programming (clock, data out, data in, reset) and the instructions sent over
// them byte by byte.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>

#include "shared/signature.h"
#include "usb/request/run.h"

namespace fliglaf {

/// What the latch of the reset line drives.
enum class ResetLevel : std::uint8_t { kLow = 0x00, kHigh = 0x08 };

class SerialLines {
 public:
  explicit SerialLines(Run& run) : run_(run), io_(run.io) {}

  /// The latch of clock and data, which is also their register in the programmer's queue.
  static constexpr std::uint8_t kLineLatch = 0;
  /// Its outputs while no instruction is sent.
  static constexpr std::uint8_t kIdleOutputs = 0x80;

  /// First byte of the instructions that do not address a memory: enable, erase, lock.
  static constexpr std::uint8_t kControl = 0xAC;
  /// Second byte of the programming enable.
  static constexpr std::uint8_t kEnable = 0x53;

  /// Writes the four latches of the lines: the reset line at `level`, the other outputs idle.
  void SetUp(ResetLevel level);
  /// Makes the reset line an output at `level`.
  void DriveReset(ResetLevel level);
  /// Changes the level of the reset line, which is an output already.
  void SetReset(ResetLevel level);
  /// Tells the programmer's shifter how to drive the lines. `fixed` are bits of the line latch that
  /// stay high.
  void ConfigureShifter(ShifterLength length, std::uint8_t fixed = kIdleOutputs);

  /// Sends instruction bytes at once.
  void Send(std::initializer_list<std::uint8_t> bytes);
  /// The same with kControl ahead of them.
  void SendControl(std::initializer_list<std::uint8_t> bytes);
  /// Captures one byte at once.
  [[nodiscard]] std::uint8_t Receive();
  /// Queues instruction bytes.
  template <std::convertible_to<std::uint8_t>... Bytes>
  void QueueSend(Bytes... bytes) {
    (io_.QueueRegisterWrite(bytes, reg::kShiftOut), ...);
  }
  /// Queues the capture of one byte; it comes with the next bulk read.
  void QueueCapture() { io_.QueueRegisterWrite(1, reg::kCapture); }

  /// Reads the signature of parts whose flash is organised in words.
  [[nodiscard]] Signature ReadWordFamilySignature();

 private:
  Run& run_;
  Programmer& io_;
};

}  // namespace fliglaf
