// The flash programming interface of parts on a clock and a data line: its frames, and the block
// commands made of them. Registers and commands are those that data sheets of such parts give for
// their flash programming interface.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <utility>

#include "usb/request/run.h"

namespace fliglaf {

/// How a frame reaches the device.
enum class FrameMode : std::uint8_t {
  kUsb,  ///< queued; what is read comes with the next bulk read
  kCom,  ///< performed at once; what is read is returned
};

class FlashInterface {
 public:
  /// Registers, by their address.
  enum class Register : std::int16_t {
    kDevice = 0,
    kRevision = 1,
    kControl = 2,
    kData = 0xB4,  ///< commands, their operands and their answers
  };

  enum class Command : std::int16_t { kDeviceErase = 3, kBlockRead = 6, kBlockWrite = 7 };

  /// The status of a command that the device has accepted.
  static constexpr std::int16_t kAccepted = 0x0D;

  /// Bits of what readAddressFrame returns.
  static constexpr std::int16_t kByteReady = 0x01;
  static constexpr std::int16_t kNotTaken = 0x02;  ///< the last byte written

  /// Clocks that a frame adds for the device to become ready.
  static constexpr std::int16_t kRegisterWait = 1;
  static constexpr std::int16_t kDataWait = 5;

  /// `reset_target` queues the pulse that restarts the device.
  FlashInterface(Run& run, std::function<void()> reset_target)
      : run_(run), io_(run.io), reset_target_(std::move(reset_target)) {}

  /// Selects a register. Always queued.
  void writeAddressFrame(Register address);
  void writeDataFrame(std::int16_t value, std::int16_t wait_count, FrameMode mode);
  /// The status bits. With FrameMode::kUsb 0, and no frame.
  std::int16_t readAddressFrame(FrameMode mode);
  /// 0 when queued. With FrameMode::kCom, `wait_count` is 0 to 9.
  std::int16_t readDataFrame(std::int16_t wait_count, FrameMode mode);

  /// Restarts the device and enables its flash interface.
  void initFlashInterface();

  /// A device or revision number, read at once.
  [[nodiscard]] std::uint8_t ReadRegister(Register address);

  /// Restarts the device, sends a command and returns its first status.
  [[nodiscard]] std::int16_t StartCommand(Command command);

  /// Writes `count` bytes (1 to 256) of the image from index `address` on, to the same address of
  /// the device; nothing after a status other than kAccepted. A stop ends it.
  void writeFlashBlock(std::int32_t address, std::int32_t count, FrameMode mode);

  /// Reads `count` bytes (1 to 256) and returns the last one with FrameMode::kCom; 0 when the
  /// command is refused or after a stop. Refused operands are sent Retries() times more, and after
  /// that the bytes are read all the same: the check of the bytes reports the difference.
  std::int16_t readFlashBlock(std::int32_t address, std::int32_t count, FrameMode mode);

 private:
  void Write(std::int32_t value, std::uint8_t register_number, FrameMode mode);
  void Clock(std::initializer_list<std::int32_t> levels, FrameMode mode);
  void ClockLow(int times, FrameMode mode);
  [[nodiscard]] std::int16_t TakeByte();
  void SendOperands(std::int32_t address, std::int32_t count, std::int32_t delay_us);

  Run& run_;
  Programmer& io_;
  std::function<void()> reset_target_;
};

}  // namespace fliglaf
