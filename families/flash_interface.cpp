#include "families/flash_interface.h"

#include <array>

#include "usb/components/bits.h"

namespace fliglaf {
namespace {

constexpr std::int32_t kLow = 0x00;
constexpr std::int32_t kHigh = 0x80;  // bit 7 is the level of the data line

/// Written to the control register one after the other: the restart, then the enable.
constexpr std::array<std::int16_t, 2> kEnableSequence{2, 1};
constexpr std::int32_t kEnableTime = 20'000;  // µs

/// Between the operands of a command, in µs.
constexpr std::int32_t kWriteOperandPause = 20;
constexpr std::int32_t kReadOperandPause = 30;

}  // namespace

void FlashInterface::Write(std::int32_t value, std::uint8_t register_number, FrameMode mode) {
  if (mode == FrameMode::kUsb) {
    io_.QueueRegisterWrite(value, register_number);
  } else {
    io_.WriteRegister(value, register_number);
  }
}

void FlashInterface::Clock(std::initializer_list<std::int32_t> levels, FrameMode mode) {
  for (const std::int32_t level : levels) Write(level, reg::kFrameBit, mode);
}

void FlashInterface::ClockLow(int times, FrameMode mode) {
  for (int i = 0; i < times; ++i) Write(kLow, reg::kFrameBit, mode);
}

/// A byte of the device comes bit 0 first; the programmer takes the first bit for bit 7.
std::int16_t FlashInterface::TakeByte() {
  Write(1, reg::kFrameIn, FrameMode::kCom);
  return static_cast<std::int16_t>(reverseBits(io_.ReadRegister(reg::kCaptured) & 0xFF, 8));
}

void FlashInterface::writeAddressFrame(Register address) {
  Clock({kLow, kHigh, kHigh}, FrameMode::kUsb);
  io_.QueueRegisterWrite(static_cast<std::int32_t>(address), reg::kFrameByte);
  Clock({kHigh}, FrameMode::kUsb);
}

void FlashInterface::writeDataFrame(std::int16_t value, std::int16_t wait_count, FrameMode mode) {
  Clock({kLow, kHigh, kLow, kLow, kLow}, mode);
  Write(value, reg::kFrameByte, mode);
  ClockLow(1 + wait_count, mode);
}

std::int16_t FlashInterface::readAddressFrame(FrameMode mode) {
  if (mode != FrameMode::kCom) return 0;
  Clock({kLow, kLow, kHigh, kLow}, mode);
  return TakeByte();
}

std::int16_t FlashInterface::readDataFrame(std::int16_t wait_count, FrameMode mode) {
  constexpr int kClocks = 6;
  if (mode == FrameMode::kUsb) {
    ClockLow(kClocks + wait_count, mode);
    io_.QueueRegisterWrite(1, reg::kFrameIn);
    return 0;
  }
  // Eight of the clocks in one write, when there are as many.
  if (wait_count < 2) {
    ClockLow(kClocks + wait_count, mode);
  } else {
    Write(kLow, reg::kFrameByte, mode);
    ClockLow(wait_count - 2, mode);
  }
  return TakeByte();
}

void FlashInterface::initFlashInterface() {
  reset_target_();
  writeAddressFrame(Register::kControl);
  for (const std::int16_t key : kEnableSequence) {
    writeDataFrame(key, kRegisterWait, FrameMode::kUsb);
  }
  io_.QueueDelay(kEnableTime);
}

std::uint8_t FlashInterface::ReadRegister(Register address) {
  writeAddressFrame(address);
  io_.FlushQueue();
  io_.DelayMs(10);
  return static_cast<std::uint8_t>(readDataFrame(kRegisterWait, FrameMode::kCom));
}

std::int16_t FlashInterface::StartCommand(Command command) {
  initFlashInterface();
  writeAddressFrame(Register::kData);
  writeDataFrame(static_cast<std::int16_t>(command), kDataWait, FrameMode::kUsb);
  io_.FlushQueue();
  io_.DelayMs(10);
  return readDataFrame(kDataWait, FrameMode::kCom);
}

/// Address and length of a block; 256 bytes are sent as 0.
void FlashInterface::SendOperands(std::int32_t address, std::int32_t count, std::int32_t delay_us) {
  for (const std::int32_t operand : {address / 256, address & 0xFF, count % 256}) {
    writeDataFrame(static_cast<std::int16_t>(operand), kDataWait, FrameMode::kCom);
    io_.ShortDelay(delay_us);
  }
}

void FlashInterface::writeFlashBlock(std::int32_t address, std::int32_t count, FrameMode mode) {
  if (StartCommand(Command::kBlockWrite) != kAccepted) return;
  SendOperands(address, count, kWriteOperandPause);
  if (readDataFrame(kDataWait, FrameMode::kCom) != kAccepted) return;
  for (std::int32_t i = 0; i < count; ++i) {
    writeDataFrame(run_.vars.quorinibuffer[address + i], kDataWait, mode);
    if (run_.stopped()) return;
  }
}

std::int16_t FlashInterface::readFlashBlock(std::int32_t address, std::int32_t count,
                                            FrameMode mode) {
  for (std::int32_t attempt = 0; attempt <= run_.Retries(); ++attempt) {
    if (StartCommand(Command::kBlockRead) != kAccepted) return 0;
    SendOperands(address, count, kReadOperandPause);
    if (readDataFrame(kDataWait, FrameMode::kCom) == kAccepted) break;
  }
  std::int16_t byte = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    byte = readDataFrame(kDataWait, mode);
    if (run_.stopped()) return 0;
  }
  return byte;
}

}  // namespace fliglaf
