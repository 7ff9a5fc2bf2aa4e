#include "simulator/chips/two_wire_chip.h"

#include <algorithm>

namespace fliglaf::simulator {
namespace {

constexpr std::int64_t kRestartPulse = 20 * Clock::kMicrosecond;
constexpr std::int64_t kEnableTime = 20 * Clock::kMillisecond;

constexpr int kBitsOfAByte = 8;
constexpr int kFieldBits = 2;  // of an instruction and of a length

constexpr std::uint8_t kDevice = 0;
constexpr std::uint8_t kRevision = 1;
constexpr std::uint8_t kControl = 2;
constexpr std::uint8_t kData = 0xB4;
constexpr std::array<std::uint8_t, 2> kEnable{2, 1};

constexpr std::uint8_t kByteReady = 0x01;
constexpr std::uint8_t kNotTaken = 0x02;

constexpr std::uint8_t kInvalid = 0x00;
constexpr std::uint8_t kFailed = 0x02;
constexpr std::uint8_t kAccepted = 0x0D;

constexpr std::array<std::uint8_t, 3> kEraseKey{0xDE, 0xAD, 0xA5};
constexpr std::size_t kBlockOperands = 3;
constexpr std::uint32_t kLargestBlock = 256;

}  // namespace

TwoWireChip::TwoWireChip(const Clock& clock, const TwoWireWiring& wiring, const Silicon& silicon,
                         const Features& features)
    : clock_(clock),
      wiring_(wiring),
      silicon_(silicon),
      features_(features),
      flash_(flash_bytes() + silicon.page_bytes) {}

std::vector<MemoryArea> TwoWireChip::Memory() {
  const auto cells = flash_.cells();
  return {{"flash", cells.first(silicon_.flash_bytes), FlashArray::kErased},
          {"lock", cells.subspan(silicon_.flash_bytes, 1), FlashArray::kErased}};
}

std::vector<Signal> TwoWireChip::Signals() const {
  std::vector<Signal> signals{{"clk", wiring_.clock}, {"data", wiring_.data}};
  if (wiring_.clock_hold != 0) signals.push_back({"reset", wiring_.clock_hold});
  return signals;
}

// The lines

void TwoWireChip::Power(bool on) {
  powered_ = on;
  Restart();
  Enter(Phase::kLost);
}

void TwoWireChip::Restart() {
  Enter(Phase::kStart);
  driven_ = 0;
  address_ = 0;
  control_ = {};
  enabled_at_ = 0;
  command_ = Command::kNone;
  operands_.clear();
  answer_.reset();
  const std::uint8_t lock = flash_.Read(static_cast<std::uint32_t>(silicon_.flash_bytes));
  locked_pages_ = static_cast<std::size_t>(FlashArray::kErased - lock);
}

void TwoWireChip::Observe(Lines levels) {
  const bool joined = (levels & wiring_.routing) == wiring_.joined;
  const Lines clock = wiring_.clock | wiring_.clock_hold;
  const bool high = !joined || (levels & clock) == clock;
  if (high == clock_high_) return;
  clock_high_ = high;
  if (!powered_ || (features_.needs_vpp && !vpp_)) return;
  if (!high) {
    fell_at_ = clock_.now();
    return Fall();
  }
  if (clock_.now() - fell_at_ < kRestartPulse) return Rise((levels & wiring_.data) != 0);
  if ((levels & wiring_.reset_enable) == wiring_.reset_enable) Restart();
}

/// The chip holds the line while the programmer waits for it and while it answers.
void TwoWireChip::Fall() {
  bool level = false;
  switch (phase_) {
    case Phase::kWriteWait:
    case Phase::kReadWait:
      level = clocks_ == WaitClocks() - 1;
      break;
    case Phase::kAnswer:
      level = (out_ >> clocks_ & 1) != 0;
      break;
    default:
      driven_ = 0;
      return;
  }
  driven_ = wiring_.data;
  levels_ = level ? wiring_.data : 0;
}

void TwoWireChip::Enter(Phase phase) {
  phase_ = phase;
  clocks_ = 0;
  bits_ = 0;
}

void TwoWireChip::Rise(bool data) {
  if (data && driven_ != 0 && levels_ == 0) ++conflicts_;
  ++clocks_;
  switch (phase_) {
    case Phase::kStart:
      return Enter(Phase::kInstruction);
    case Phase::kInstruction:
    case Phase::kAddress:
    case Phase::kLength:
    case Phase::kData:
      return TakeBits(data);
    case Phase::kWriteWait:
      if (clocks_ == WaitClocks()) Enter(Phase::kStop);
      return;
    case Phase::kTurnAround:
      if (instruction_ == Instruction::kReadStatus) return StartAnswer(Status());
      return Enter(Phase::kReadWait);
    case Phase::kReadWait:
      if (clocks_ == WaitClocks()) StartAnswer(ReadRegister());
      return;
    case Phase::kAnswer:
      if (clocks_ == kBitsOfAByte) Enter(Phase::kStart);
      return;
    case Phase::kStop:
      return Enter(Phase::kStart);
    case Phase::kLost:
      return;
  }
}

void TwoWireChip::TakeBits(bool data) {
  bits_ |= (data ? 1U : 0U) << (clocks_ - 1);
  const bool field = phase_ == Phase::kInstruction || phase_ == Phase::kLength;
  if (clocks_ < (field ? kFieldBits : kBitsOfAByte)) return;
  switch (phase_) {
    case Phase::kInstruction:
      return StartInstruction();
    case Phase::kAddress:
      address_ = static_cast<std::uint8_t>(bits_);
      return Enter(Phase::kStop);
    case Phase::kLength:
      if (bits_ != 0) return Enter(Phase::kLost);
      return Enter(instruction_ == Instruction::kWriteData ? Phase::kData : Phase::kTurnAround);
    default:
      WriteRegister(static_cast<std::uint8_t>(bits_));
      return Enter(Phase::kWriteWait);
  }
}

void TwoWireChip::StartInstruction() {
  instruction_ = static_cast<Instruction>(bits_);
  switch (instruction_) {
    case Instruction::kSelect:
      return Enter(Phase::kAddress);
    case Instruction::kReadStatus:
      return Enter(Phase::kTurnAround);
    case Instruction::kReadData:
    case Instruction::kWriteData:
      return Enter(Phase::kLength);
  }
}

void TwoWireChip::StartAnswer(std::uint8_t byte) {
  Enter(Phase::kAnswer);
  out_ = byte;
}

int TwoWireChip::WaitClocks() const { return address_ == kData ? 5 : 1; }

// The registers

/// A byte is taken at once, but for the key of an erase that is being carried out.
std::uint8_t TwoWireChip::Status() const {
  if (enabled_at_ == 0) return 0;
  if (answer_ready()) return kByteReady;
  return command_ == Command::kErase && clock_.now() < busy_until_ ? kNotTaken : 0;
}

std::uint8_t TwoWireChip::ReadRegister() {
  switch (address_) {
    case kDevice:
      return silicon_.signature[1];
    case kRevision:
      return silicon_.signature[2];
    case kData:
      break;
    default:
      return 0;
  }
  if (!answer_ready()) return 0;
  const std::uint8_t byte = *answer_;
  answer_.reset();
  if (command_ == Command::kRead && operands_.size() == kBlockOperands && left_ > 0) {
    --left_;
    Answer(flash_.Read(place_++));
  }
  return byte;
}

void TwoWireChip::WriteRegister(std::uint8_t byte) {
  if (address_ == kControl) return WriteControl(byte);
  if (address_ != kData || enabled_at_ == 0 || clock_.now() < enabled_at_) return;
  TakeCommandByte(byte);
}

void TwoWireChip::WriteControl(std::uint8_t byte) {
  control_ = {control_[1], byte};
  if (control_ == kEnable) enabled_at_ = clock_.now() + kEnableTime;
}

// The commands

void TwoWireChip::Answer(std::uint8_t byte) {
  answer_ = byte;
  ready_at_ = std::max(clock_.now(), busy_until_);
}

void TwoWireChip::TakeCommandByte(std::uint8_t byte) {
  switch (command_) {
    case Command::kErase:
      return TakeKey(byte);
    case Command::kRead:
      return TakeOperand(byte);
    case Command::kWrite:
      return operands_.size() < kBlockOperands ? TakeOperand(byte) : ProgramByte(byte);
    case Command::kNone:
      break;
  }
  const auto command = static_cast<Command>(byte);
  const bool known =
      command == Command::kErase || command == Command::kRead || command == Command::kWrite;
  command_ = known ? command : Command::kNone;
  operands_.clear();
  Answer(known ? kAccepted : kInvalid);
}

/// High and low byte of the address, length.
void TwoWireChip::TakeOperand(std::uint8_t byte) {
  if (operands_.size() == kBlockOperands) return;
  operands_.push_back(byte);
  if (operands_.size() < kBlockOperands) return;
  place_ = static_cast<std::uint32_t>(operands_[0]) << 8 | operands_[1];
  left_ = operands_[2] == 0 ? kLargestBlock : operands_[2];
  const bool may = MayAccess();
  if (!may) command_ = Command::kNone;
  Answer(may ? kAccepted : kFailed);
}

bool TwoWireChip::MayAccess() const {
  const std::size_t top = flash_bytes() + (command_ == Command::kRead ? silicon_.page_bytes : 0);
  const bool lock_byte = command_ == Command::kRead && place_ == silicon_.flash_bytes && left_ == 1;
  return place_ + left_ <= top && (lock_byte || place_ / silicon_.page_bytes >= locked_pages_);
}

void TwoWireChip::ProgramByte(std::uint8_t byte) {
  flash_.Program(place_++, byte);
  busy_until_ = std::max(busy_until_, clock_.now()) + silicon_.byte_write.count();
  if (--left_ > 0) return;
  command_ = Command::kNone;
  Answer(kAccepted);
}

void TwoWireChip::TakeKey(std::uint8_t byte) {
  operands_.push_back(byte);
  if (operands_.size() < kEraseKey.size()) return;
  if (!std::ranges::equal(operands_, kEraseKey)) {
    command_ = Command::kNone;
    return Answer(kFailed);
  }
  flash_.Erase();
  busy_until_ = std::max(busy_until_, clock_.now()) + silicon_.erase.count();
  Answer(kAccepted);
}

}  // namespace fliglaf::simulator
