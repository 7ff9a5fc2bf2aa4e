#include "simulator/chips/config_word_chip.h"

namespace fliglaf::simulator {
namespace {

// The shifter's lines, as the adapter takes them.
constexpr Lines kClock = LinesOf(0, 0x10);
constexpr Lines kDataIn = LinesOf(0, 0x01);

constexpr std::int64_t kDischarge = 400 * Clock::kMillisecond;
constexpr std::int64_t kVppAhead = 100 * Clock::kMillisecond;
constexpr std::int64_t kStartUp = 200 * Clock::kMillisecond;

constexpr std::uint8_t kSelect = 0x00;
constexpr std::uint8_t kNext = 0x60;
constexpr std::uint8_t kLoad = 0x02;
constexpr std::uint8_t kBegin = 0x18;
constexpr std::uint8_t kEnd = 0xE8;
constexpr std::uint8_t kRead = 0x20;

constexpr int kCommandClocks = 8;
constexpr int kWordClocks = 16;
constexpr std::uint16_t kWordBits = 0x3FFF;

}  // namespace

ConfigWordChip::ConfigWordChip(const Clock& clock, const ConfigWordWiring& wiring,
                               const Silicon& silicon, const Features& features)
    : clock_(clock),
      wiring_(wiring),
      silicon_(silicon),
      features_(features),
      power_left_at_(-kDischarge) {}

std::vector<Signal> ConfigWordChip::Signals() const {
  return {{"sck", kClock}, {"mosi", kDataIn}, {"miso", kDataOut}};
}

std::vector<MemoryArea> ConfigWordChip::Memory() {
  const std::span cells(cells_);
  std::vector<MemoryArea> areas{{"low0", cells.subspan(0, 1), 0xFF},
                                {"high0", cells.subspan(1, 1), kHighBits, kHighBits}};
  if (features_.words > 1) {
    areas.push_back({"low1", cells.subspan(2, 1), 0xFF});
    areas.push_back({"high1", cells.subspan(3, 1), kHighBits, kHighBits});
  }
  return areas;
}

void ConfigWordChip::Power(bool on) {
  powered_ = on;
  entry_ = Entry::kNone;
  driven_ = 0;
  if (!on) {
    power_left_at_ = clock_.now();
    return;
  }
  const bool vpp_fits =
      vpp_ == features_.vpp_first && (!vpp_ || clock_.now() - vpp_came_at_ >= kVppAhead);
  if (clock_.now() - power_left_at_ < kDischarge || !vpp_fits) return;
  if (wiring_.before_supply.Fit(seen_)) entry_ = Entry::kSupplied;
  MoveOn();
}

void ConfigWordChip::ProgrammingVoltage(bool on) {
  vpp_ = on;
  if (on) {
    vpp_came_at_ = clock_.now();
  } else if (entry_ == Entry::kEntered) {
    entry_ = Entry::kNone;
    driven_ = 0;
  }
}

void ConfigWordChip::Observe(Lines levels) {
  const Lines changed = levels ^ seen_;
  seen_ = levels;
  if (!powered_ || changed == 0) return;
  if (entry_ != Entry::kEntered) return MoveOn();
  if (clock_.now() - entered_at_ < kStartUp || (changed & kClock) == 0) return;
  if ((levels & kClock) != 0) {
    Rise((levels & kDataIn) != 0);
  } else {
    Fall();
  }
}

void ConfigWordChip::MoveOn() {
  if (entry_ == Entry::kSupplied && wiring_.after_supply.Fit(seen_)) entry_ = Entry::kReady;
  if (entry_ != Entry::kReady || !vpp_ || !wiring_.at_the_end.Fit(seen_)) return;
  entry_ = Entry::kEntered;
  entered_at_ = clock_.now();
  clocks_ = 0;
  shift_ = 0;
  in_word_ = false;
  address_ = -1;
  writing_since_ = -1;
}

void ConfigWordChip::Rise(bool data) {
  if (in_word_) {
    shift_ |= (data ? 1U : 0U) << clocks_;
    if (++clocks_ == kWordClocks) TakeWord();
    return;
  }
  shift_ = shift_ << 1 | (data ? 1U : 0U);
  if (++clocks_ == kCommandClocks) TakeCommand(static_cast<std::uint8_t>(shift_));
}

/// Puts out the next bit of a word that is read.
void ConfigWordChip::Fall() {
  driven_ = 0;
  if (!in_word_ || command_ != kRead) return;
  driven_ = kDataOut;
  levels_ = (ReadWord() << 1 >> clocks_ & 1) != 0 ? kDataOut : 0;
}

void ConfigWordChip::TakeCommand(std::uint8_t command) {
  command_ = command;
  clocks_ = 0;
  shift_ = 0;
  switch (command) {
    case kSelect:
      address_ = 0;
      in_word_ = true;
      return;
    case kNext:
      if (address_ >= 0) ++address_;
      return;
    case kLoad:
    case kRead:
      in_word_ = true;
      return;
    case kBegin:
      writing_since_ = clock_.now();
      return;
    case kEnd:
      return EndWriting();
    default:
      return;
  }
}

void ConfigWordChip::TakeWord() {
  if (command_ == kLoad) loaded_ = static_cast<std::uint16_t>(shift_ >> 1 & kWordBits);
  if (command_ == kRead && at_a_word()) ++address_;
  in_word_ = false;
  clocks_ = 0;
  shift_ = 0;
}

void ConfigWordChip::EndWriting() {
  const bool long_enough =
      writing_since_ >= 0 && clock_.now() - writing_since_ >= silicon_.config_write.count();
  writing_since_ = -1;
  if (!long_enough || !at_a_word()) return;
  const std::size_t cell = 2 * static_cast<std::size_t>(address_ - kFirstWord);
  cells_[cell] = static_cast<std::uint8_t>(loaded_);
  cells_[cell + 1] = static_cast<std::uint8_t>(loaded_ >> 8);
}

bool ConfigWordChip::at_a_word() const {
  return address_ >= kFirstWord && address_ < kFirstWord + features_.words;
}

std::uint16_t ConfigWordChip::ReadWord() const {
  if (!at_a_word()) return 0;
  const std::size_t cell = 2 * static_cast<std::size_t>(address_ - kFirstWord);
  std::uint8_t bytes[] = {cells_[cell], cells_[cell + 1]};
  for (const StuckBit& stuck : stuck_) {
    if (stuck.address / 2 != cell / 2) continue;
    std::uint8_t& byte = bytes[stuck.address % 2];
    const auto mask = static_cast<std::uint8_t>(1U << stuck.bit);
    byte = static_cast<std::uint8_t>(stuck.value ? byte | mask : byte & ~mask);
  }
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

}  // namespace fliglaf::simulator
