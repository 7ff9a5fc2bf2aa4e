// The lines of serial programming (clock, data out, data in, reset) and the instructions sent over
// them byte by byte.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "usb/request/run.h"
#include "usb/request/signature_check.h"

namespace fliglaf {

/// What the latch of the reset line drives.
enum class ResetLevel : std::uint8_t { kLow = 0x00, kHigh = 0x08 };

/// Which way the configuration bytes go.
enum class ConfigDirection : std::uint8_t {
  kInput,  ///< from the image to the device
  kOutput  ///< from the device to the image
};

class SerialLines {
 public:
  explicit SerialLines(Run& run) : run_(run) {}

  /// The latch of clock and data, which is also their register in the programmer's queue.
  static constexpr std::uint8_t kLineLatch = 0;
  /// Its outputs while no instruction is sent.
  static constexpr std::uint8_t kIdleOutputs = 0x80;

  /// First byte of the instructions that do not address a memory: enable, erase, lock.
  static constexpr std::uint8_t kControl = 0xAC;
  /// Second byte of the programming enable.
  static constexpr std::uint8_t kEnable = 0x53;

  /// Sends the mode packet, which comes before the lines are set up.
  void SelectMode(std::uint8_t mode) { run_.SendPacket({0x30, mode}, kLongPacket); }
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
  void QueueSend(std::initializer_list<std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) run_.io.QueueRegisterWrite(byte, reg::kShiftOut);
  }
  /// Queues the capture of one byte; it comes with the next bulk read.
  void QueueCapture() { run_.io.QueueRegisterWrite(1, reg::kCapture); }

  /// Reads the signature of parts whose flash is organised in words.
  [[nodiscard]] Signature ReadWordFamilySignature();

 private:
  Run& run_;
};

// For families without a class.
namespace serial {

/// Latches of the serial lines: an even one drives a port, the odd one above it is its input mask.
inline constexpr std::uint8_t kLineLatch = 0;
inline constexpr std::uint8_t kLineMaskLatch = 1;
inline constexpr std::uint8_t kResetLatch = 2;
inline constexpr std::uint8_t kResetMaskLatch = 3;

/// Bits of the line latch.
inline constexpr std::uint8_t kDataOut = 0x01;  ///< to the device
inline constexpr std::uint8_t kDataIn = 0x02;   ///< from the device
inline constexpr std::uint8_t kClock = 0x10;
inline constexpr std::uint8_t kIdleOutputs = 0x80;

/// Values of the reset latch.
inline constexpr std::uint8_t kResetLow = 0x00;
inline constexpr std::uint8_t kResetHigh = 0x08;

/// How the programmer's shifter drives the lines, family 1 apart: bytes 4 to 14 of the command
/// buffer. Families 2, 3, 13 and 14 leave the last two bytes of it as they are.
// clang-format off
inline constexpr std::array<std::uint8_t, 11> kShifter{
    kLineLatch,    // line register
    8,
    kClock,        // clock bit
    kIdleOutputs,  // bits that stay high
    kDataIn,       // data-in bit
    kDataOut,      // data-out bit
    0, 8, 8, 0, 0};
// clang-format on
inline constexpr auto kShortShifter = std::span(kShifter).first<9>();

/// Writes the four latches of the lines: the reset at `reset`, the other outputs idle.
void SetUpLines(Run& run, std::uint8_t reset);
/// Tells the programmer's shifter how to drive the lines: `bytes` into the command buffer from byte
/// 4 on, which every long packet carries along.
void ConfigureShifter(Run& run, std::span<const std::uint8_t> bytes);

/// Sends instruction bytes at once.
void Send(Run& run, std::initializer_list<std::uint8_t> bytes);
/// Captures one byte at once.
std::uint8_t Receive(Run& run);

/// The three signature bytes of the families whose flash is organised in words: 3, 13 and 14.
[[nodiscard]] std::array<std::uint8_t, 3> WordFamilySignature(Run& run);

/// Queues one instruction byte.
inline void QueueSend(Run& run, std::uint8_t byte) {
  run.io.QueueRegisterWrite(byte, reg::kShiftOut);
}
/// Queues the capture of one byte; it comes back with the next bulk read.
inline void QueueCapture(Run& run) { run.io.QueueRegisterWrite(1, reg::kCapture); }

}  // namespace serial
}  // namespace fliglaf
