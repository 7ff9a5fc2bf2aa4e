#include "simulator/simulated_programmer.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "shared/text.h"
#include "simulator/judge.h"
#include "simulator/usb_timing.h"

namespace fliglaf::simulator {
namespace {

constexpr std::uint8_t kFirstSetupRegister = 0x36;
constexpr std::uint8_t kLastSetupRegister = 0x3E;
/// Where the shifter configuration begins in the command buffer.
constexpr std::int64_t kFirstShifterByte = 4;

constexpr std::array<std::uint8_t, 3> kArmHead{0x0A, 0x10, 0x40};
constexpr std::size_t kArmBytes = 8;

constexpr std::uint32_t kInvalidArgument = 0x80070057;

using usb::kCommand;
using usb::kQuestion;

/// In real time a wait is cut short, so that a stop request is noticed while it lasts.
constexpr std::int64_t kLongestRealWait = 20 * Clock::kMillisecond;

/// A number beyond the modes is one without a name, in which every byte is accepted.
CheckMode ModeOf(std::int32_t number) {
  constexpr std::int16_t kNoName = -1;
  return CheckMode{std::in_range<std::int16_t>(number) ? static_cast<std::int16_t>(number)
                                                       : kNoName};
}

}  // namespace

SimulatedProgrammer::SimulatedProgrammer(Clock& clock, Socket& socket, std::int16_t instance)
    : clock_(clock), socket_(socket), wires_(clock, socket), shifter_(wires_), instance_(instance) {
  PresetLines();
}

void SimulatedProgrammer::Spend(std::int64_t nanoseconds) {
  clock_.Advance(nanoseconds);
  clock_.CatchUp();
  pipe_.Poll(clock_.now());
}

void SimulatedProgrammer::WaitUntil(std::int64_t time) {
  const std::int64_t wait = time - clock_.now();
  Spend(clock_.real_time() ? std::min(wait, kLongestRealWait) : wait);
}

// Supplies, pins, signals

std::int32_t SimulatedProgrammer::OpenProgrammer() {
  Spend(kQuestion);
  OpenBlocks();
  register_setup_.reset();
  PresetLines();
  return 0;
}

/// The lines of a programmer on USB come up high, those of one on the parallel port low.
void SimulatedProgrammer::PresetLines() { wires_.Preset(lines_come_up_high_); }

/// The blocks are held for a run only: afterwards their host may replace them
/// by blocks of another size.
void SimulatedProgrammer::OpenBlocks() {
  const auto none = [] {};
  vars_.OpenMainGroup(instance_, none);
  vars_.OpenDataBuffers(vars_.DataBufferLength(), none);
}

void SimulatedProgrammer::EndRun() {
  Spend(kCommand);
  socket_.AllOff();
  queue_.Clear();
  pipe_.Clear();
  vars_.ReleaseMainGroup();
  vars_.ReleaseDataBuffers();
}

std::int32_t SimulatedProgrammer::SetFigMode(std::uint8_t /*mode*/) {
  Spend(kQuestion);
  return 0;
}

std::int32_t SimulatedProgrammer::SetVcc(std::int32_t millivolts) {
  Spend(kQuestion);
  socket_.SetSupply(millivolts);
  return 0;
}

std::int32_t SimulatedProgrammer::SetVpp(std::int32_t /*millivolts*/, std::uint8_t /*channel*/) {
  Spend(kQuestion);
  return 0;
}

void SimulatedProgrammer::SetGndPin(std::uint8_t pin, std::uint8_t state) {
  Spend(kCommand);
  socket_.SetGndPin(pin, state != 0);
}

void SimulatedProgrammer::SetVccPin(std::uint8_t pin, std::uint8_t state) {
  Spend(kCommand);
  socket_.SetVccPin(pin, state != 0);
}

void SimulatedProgrammer::SetVppPin(std::uint8_t pin, std::uint8_t state) {
  Spend(kCommand);
  socket_.SetVppPin(pin, state != 0);
}

std::int32_t SimulatedProgrammer::SetOutputs(std::int32_t /*value*/) {
  Spend(kCommand);
  return 0;
}

void SimulatedProgrammer::SignalPass(std::int32_t /*value*/) { Spend(kCommand); }
void SimulatedProgrammer::SignalFail(std::int32_t /*value*/) { Spend(kCommand); }
void SimulatedProgrammer::ReportStartupFailure() { Spend(kCommand); }
void SimulatedProgrammer::ResetInterface() { Spend(kCommand); }

std::int32_t SimulatedProgrammer::EndProgramming(std::int32_t /*page*/, std::int32_t /*zero*/,
                                                 std::int32_t /*data*/, std::int32_t /*address*/) {
  Spend(kCommand);
  return 0;
}

// Registers, latches, delays

std::int32_t SimulatedProgrammer::WriteRegister(std::int32_t value, std::uint8_t register_number) {
  const auto captured = Execute(static_cast<std::uint8_t>(value), register_number);
  if (captured) captured_ = *captured;
  Spend(kCommand);
  return 0;
}

std::int32_t SimulatedProgrammer::ReadRegister(std::uint8_t register_number) {
  Spend(kQuestion);
  return register_number == reg::kCaptured ? captured_ : 0;
}

std::int32_t SimulatedProgrammer::WriteLatch(std::int32_t value, std::uint8_t latch) {
  wires_.Write(latch, static_cast<std::uint8_t>(value));
  Spend(kCommand);
  return 0;
}

std::int32_t SimulatedProgrammer::DelayMs(std::int32_t milliseconds) {
  Spend(milliseconds * Clock::kMillisecond);
  return 0;
}

std::int32_t SimulatedProgrammer::ShortDelay(std::int32_t microseconds) {
  Spend(microseconds * Clock::kMicrosecond);
  return 0;
}

std::int32_t SimulatedProgrammer::QueueRegisterWrite(std::int32_t value,
                                                     std::uint8_t register_number) {
  queue_.Write(register_number, static_cast<std::uint8_t>(value));
  return 0;
}

std::int32_t SimulatedProgrammer::QueueDelay(std::int32_t microseconds) {
  queue_.Delay(microseconds);
  return 0;
}

/// The entries are carried out as they come over the wire: each when it has arrived and the one
/// before it is done.
std::int32_t SimulatedProgrammer::FlushQueue() {
  std::int64_t arrival = clock_.now() + usb::kFrame;
  queue_.Send([&](WriteQueue::Entry entry) {
    arrival += usb::kQueueEntryBytes * usb::kPacket / static_cast<int>(usb::kPacketBytes);
    clock_.AdvanceTo(arrival);
    const std::uint8_t number = entry.register_number();
    if (number < kPortRegisters) {  // most of them
      wires_.Write(number, entry.value());
    } else if (number == WriteQueue::Entry::kDelay) {
      clock_.Advance(entry.microseconds() * Clock::kMicrosecond);
    } else if (const auto captured = Execute(entry.value(), number)) {
      pipe_.Capture(*captured);
    }
  });
  Spend(0);
  return 0;
}

/// Carries out a register write; the result is the byte that it captured, if it did.
std::optional<std::uint8_t> SimulatedProgrammer::Execute(std::uint8_t value,
                                                         std::uint8_t register_number) {
  switch (register_number) {
    case reg::kShiftOut:
      shifter_.OutHighFirst(shifter_config(), value);
      return std::nullopt;
    case reg::kCapture:
      return shifter_.In(shifter_config());
    case reg::kShiftLow:
      shifter_.OutLowFirst(shifter_config(), value);
      return std::nullopt;
    case reg::kLastBit:
      shifter_.OutLast(shifter_config(), value, 1);
      return std::nullopt;
    case reg::kLastTwoBits:
      shifter_.OutLast(shifter_config(), value, 2);
      return std::nullopt;
    case reg::kLastByte:
      shifter_.OutLast(shifter_config(), value, 8);
      return std::nullopt;
    case reg::kTmsHighLow:
      shifter_.Walk(shifter_config(), 1);
      return std::nullopt;
    case reg::kTmsHighLowLow:
      shifter_.Walk(shifter_config(), 2);
      return std::nullopt;
    case reg::kFrameBit:
      shifter_.OutLowBits(shifter_config(), value >> 7, 1);
      return std::nullopt;
    case reg::kFrameByte:
      shifter_.OutLowBits(shifter_config(), value, 8);
      return std::nullopt;
    case reg::kFrameIn:
      return shifter_.In(shifter_config());
    default:
      break;
  }
  if (register_number >= kFirstSetupRegister && register_number <= kLastSetupRegister) {
    if (!register_setup_) register_setup_.emplace();
    (*register_setup_)[register_number - kFirstSetupRegister] = value;
  } else {
    wires_.Write(register_number, value);
  }
  return std::nullopt;
}

ShifterConfig SimulatedProgrammer::shifter_config() {
  if (register_setup_) return std::bit_cast<ShifterConfig>(*register_setup_);
  std::array<std::uint8_t, sizeof(ShifterConfig)> bytes{};
  if (vars_.quorinubuf1.block().BaseAddress() != nullptr) {
    std::ranges::copy(vars_.quorinubuf1.Range(kFirstShifterByte, std::ssize(bytes)), bytes.begin());
  }
  return std::bit_cast<ShifterConfig>(bytes);
}

// Packets, captures, judgement

void SimulatedProgrammer::usbcomwrite(std::span<const std::uint8_t> packet) {
  Spend(kCommand);
  if (packet.size() == kArmBytes && std::ranges::equal(packet.first(kArmHead.size()), kArmHead)) {
    pipe_.Arm();
  }
}

void SimulatedProgrammer::usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) {
  pipe_.Start(clock_.now(), destination, status);
}

std::int32_t SimulatedProgrammer::BlockTransfer(std::int32_t data, std::int32_t address,
                                                std::int32_t check_mode) {
  try {
    return ComponentJudge(vars_, on_turn)
        .Judge({.data = static_cast<std::uint8_t>(data), .address = address, .index = address},
               ModeOf(check_mode));
  } catch (const RangeError&) {
    throw ComponentError("BlockTransfer", kInvalidArgument);
  }
}

std::u16string SimulatedProgrammer::datstr(std::int32_t value, std::int32_t digits) {
  return HexDigits(value, digits);
}

}  // namespace fliglaf::simulator
