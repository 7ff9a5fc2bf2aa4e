#include "families/two_wire_frames.h"

#include "usb/components/bits.h"

namespace fliglaf::two_wire {
namespace {

constexpr std::int32_t kLow = 0x00;
constexpr std::int32_t kHigh = 0x80;  // bit 7 is the level of the data line

void Write(Run& run, std::int32_t value, std::uint8_t register_number, FrameMode mode) {
  if (mode == FrameMode::kUsb) {
    run.io.QueueRegisterWrite(value, register_number);
  } else {
    run.io.WriteRegister(value, register_number);
  }
}

void Clock(Run& run, std::initializer_list<std::int32_t> levels, FrameMode mode) {
  for (const std::int32_t level : levels) Write(run, level, reg::kFrameBit, mode);
}

void ClockLow(Run& run, int times, FrameMode mode) {
  for (int i = 0; i < times; ++i) Write(run, kLow, reg::kFrameBit, mode);
}

/// The byte that comes in at once, bit 0 first.
std::int16_t TakeByte(Run& run) {
  Write(run, 1, reg::kFrameIn, FrameMode::kCom);
  return static_cast<std::int16_t>(reverseBits(run.io.ReadRegister(reg::kCaptured) & 0xFF, 8));
}

void WriteLineByte(Run& run) {
  constexpr std::uint8_t kFirstWithExtraBits = 30;
  constexpr std::uint8_t kLastWithExtraBits = 31;
  const std::uint8_t option = run.vars.quorinwoption[0];
  std::int32_t levels = run.jtag.fixedBitsA | run.two_wire.dataState | run.two_wire.clockState;
  if (option == kFirstWithExtraBits || option == kLastWithExtraBits) {
    levels |= run.two_wire.extraBits;
  }
  run.io.QueueRegisterWrite(levels, run.jtag.lineRegister);
}

/// Address and length of a block; 256 bytes are sent as 0.
void SendOperands(Run& run, std::int32_t address, std::int32_t count, std::int32_t delay_us) {
  for (const std::int32_t operand : {address / 256, address & 0xFF, count % 256}) {
    writeDataFrame(run, static_cast<std::int16_t>(operand), kDataWait, FrameMode::kCom);
    run.io.ShortDelay(delay_us);
  }
}

}  // namespace

void writeAddressFrame(Run& run, std::int16_t address) {
  Clock(run, {kLow, kHigh, kHigh}, FrameMode::kUsb);
  run.io.QueueRegisterWrite(address, reg::kFrameByte);
  Clock(run, {kHigh}, FrameMode::kUsb);
}

void writeDataFrame(Run& run, std::int16_t value, std::int16_t wait_count, FrameMode mode) {
  Clock(run, {kLow, kHigh, kLow, kLow, kLow}, mode);
  Write(run, value, reg::kFrameByte, mode);
  ClockLow(run, 1 + wait_count, mode);
}

std::int16_t readAddressFrame(Run& run, FrameMode mode) {
  if (mode != FrameMode::kCom) return 0;
  Clock(run, {kLow, kLow, kHigh, kLow}, mode);
  return TakeByte(run);
}

std::int16_t readDataFrame(Run& run, std::int16_t wait_count, FrameMode mode) {
  constexpr int kClocks = 6;
  if (mode == FrameMode::kUsb) {
    ClockLow(run, kClocks + wait_count, mode);
    run.io.QueueRegisterWrite(1, reg::kFrameIn);
    return 0;
  }
  // Eight of the clocks in one write, when there are as many.
  if (wait_count < 2) {
    ClockLow(run, kClocks + wait_count, mode);
  } else {
    Write(run, kLow, reg::kFrameByte, mode);
    ClockLow(run, wait_count - 2, mode);
  }
  return TakeByte(run);
}

void resetTarget(Run& run) {
  constexpr std::int32_t kPulse = 20;  // µs
  switch (run.vars.quorinprgmode[0]) {
    case 12:
      run.two_wire.clockState = 0;
      WriteLineByte(run);
      run.io.QueueDelay(kPulse);
      run.two_wire.clockState = run.two_wire.clockMask;
      WriteLineByte(run);
      return;
    case 16:
      run.io.QueueRegisterWrite(0x00, 4);
      run.io.QueueDelay(kPulse);
      run.io.QueueRegisterWrite(0x04, 4);
      return;
    default:
      return;
  }
}

void initFlashInterface(Run& run) {
  resetTarget(run);
  writeAddressFrame(run, interface_register::kControl);
  writeDataFrame(run, 2, kRegisterWait, FrameMode::kUsb);
  writeDataFrame(run, 1, kRegisterWait, FrameMode::kUsb);
  run.io.QueueDelay(20000);
}

std::int16_t StartCommand(Run& run, std::int16_t first_byte) {
  initFlashInterface(run);
  writeAddressFrame(run, interface_register::kData);
  writeDataFrame(run, first_byte, kDataWait, FrameMode::kUsb);
  run.io.FlushQueue();
  run.io.DelayMs(10);
  return readDataFrame(run, kDataWait, FrameMode::kCom);
}

void writeFlashBlock(Run& run, std::int32_t address, std::int32_t count, FrameMode mode) {
  if (StartCommand(run, command::kBlockWrite) != kAccepted) return;
  SendOperands(run, address, count, 20);
  if (readDataFrame(run, kDataWait, FrameMode::kCom) != kAccepted) return;
  for (std::int32_t i = 0; i < count; ++i) {
    writeDataFrame(run, run.vars.quorinibuffer[address + i], kDataWait, mode);
    if (run.stopped()) return;
  }
}

std::int16_t readFlashBlock(Run& run, std::int32_t address, std::int32_t count, FrameMode mode) {
  for (std::int32_t attempt = 0; attempt <= run.Retries(); ++attempt) {
    if (StartCommand(run, command::kBlockRead) != kAccepted) return 0;
    SendOperands(run, address, count, 30);
    if (readDataFrame(run, kDataWait, FrameMode::kCom) == kAccepted) break;
  }
  std::int16_t byte = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    byte = readDataFrame(run, kDataWait, mode);
    if (run.stopped()) return 0;
  }
  return byte;
}

}  // namespace fliglaf::two_wire
