// The frames of the flash programming interface on two lines, and the block commands made of them.
#pragma once

#include <cstdint>

#include "usb/request/run.h"

namespace fliglaf::two_wire {

/// Registers of the interface, by their address.
namespace interface_register {
inline constexpr std::int16_t kDevice = 0;
inline constexpr std::int16_t kRevision = 1;
inline constexpr std::int16_t kControl = 2;
inline constexpr std::int16_t kData = 0xB4;  ///< commands, their operands, what they answer
}  // namespace interface_register

/// First byte of a command, for the data register.
namespace command {
inline constexpr std::int16_t kDeviceErase = 3;
inline constexpr std::int16_t kBlockRead = 6;
inline constexpr std::int16_t kBlockWrite = 7;
}  // namespace command

/// What a command answers when it has been accepted.
inline constexpr std::int16_t kAccepted = 0x0D;

/// Clocks for which an access waits until the device is ready.
inline constexpr std::int16_t kRegisterWait = 1;
inline constexpr std::int16_t kDataWait = 5;

/// How a frame reaches the device.
enum class FrameMode : std::uint8_t {
  kUsb,  ///< queued; what is read comes with the next bulk read
  kCom,  ///< performed at once; what is read is returned
};

/// Selects a register. Always queued.
void writeAddressFrame(Run& run, std::int16_t address);
void writeDataFrame(Run& run, std::int16_t value, std::int16_t wait_count, FrameMode mode);
/// The interface's status: bit 0, a byte is ready to be read; bit 1, the last byte written has not
/// been taken. Without FrameMode::kCom 0, and no frame.
std::int16_t readAddressFrame(Run& run, FrameMode mode);
/// 0 when queued. At once, `wait_count` is 0 to 9.
std::int16_t readDataFrame(Run& run, std::int16_t wait_count, FrameMode mode);

/// The pulse that restarts the device.
void resetTarget(Run& run);
/// Restarts the device and enables its flash interface.
void initFlashInterface(Run& run);

/// From a restart to the first status of a command.
[[nodiscard]] std::int16_t StartCommand(Run& run, std::int16_t first_byte);

/// Writes `count` bytes (1 to 256) of the image from index `address` on, to the same address of the
/// device; nothing after a status other than kAccepted. A stop ends it.
void writeFlashBlock(Run& run, std::int32_t address, std::int32_t count, FrameMode mode);

/// Reads `count` bytes (1 to 256) and returns the last, if at once; 0 when the command is refused
/// or after a stop. Refused operands are sent Retries() times more; then what is read is
/// whatever there is.
std::int16_t readFlashBlock(Run& run, std::int32_t address, std::int32_t count, FrameMode mode);

}  // namespace fliglaf::two_wire
