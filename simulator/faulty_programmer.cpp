#include "simulator/faulty_programmer.h"

#include <algorithm>
#include <utility>

#include "simulator/clock.h"
#include "simulator/usb_timing.h"

namespace fliglaf::simulator {
namespace {

constexpr std::uint32_t kUnspecifiedError = 0x80004005;
constexpr std::uint8_t kStatusFailed = bulk_status::kLastGood + 1;
constexpr std::uint32_t kLongestDelay = 10'000;  // ms

bool ConcernsBulkReads(Fault fault) {
  return fault != Fault::kNone && fault != Fault::kFailedCall && fault != Fault::kRefusal;
}

bool CanBeRefused(Op op) {
  return op == Op::kOpenProgrammer || op == Op::kSetFigMode || op == Op::kSetVcc;
}

bool HandsOverAByte(Op op) { return op == Op::kReadRegister || op == Op::kBlockTransfer; }

std::int32_t WithFlippedBit(std::int32_t byte, std::uint32_t which) {
  return byte ^ (1 << which % 8);
}

}  // namespace

std::size_t FaultyProgrammer::Count(Fault fault) const {
  return static_cast<std::size_t>(std::ranges::count(fired_, fault, &Fired::fault));
}

void FaultyProgrammer::Fire(Fault fault, Op op) { fired_.push_back({fault, calls_, op}); }

FaultyProgrammer::Choice FaultyProgrammer::Begin(Op op) {
  Poll();
  ++calls_;
  const Choice choice = Choose(op);
  if (choice.fault == Fault::kFailedCall) {
    Fire(choice.fault, op);
    throw ComponentError(std::string(Row(op).name), kUnspecifiedError);
  }
  return choice;
}

void FaultyProgrammer::usbcomwrite(std::span<const std::uint8_t> packet) {
  static_cast<void>(Begin(Op::kUsbComWrite));
  next().usbcomwrite(packet);
}

std::int32_t FaultyProgrammer::Perform(Op op, const Arguments& arguments) {
  const Choice choice = Begin(op);
  if (choice.fault == Fault::kRefusal && CanBeRefused(op)) {
    Fire(choice.fault, op);
    return Refuse(op);
  }
  const bool flips = choice.fault == Fault::kFlippedBit && HandsOverAByte(op);
  Arguments passed = arguments;
  if (flips && op == Op::kBlockTransfer) passed[0] = WithFlippedBit(passed[0], choice.detail);
  if (flips) Fire(choice.fault, op);
  const std::int32_t result = Row(op).perform(next(), passed);
  if (op == Op::kEndRun) detour_.reset();
  return flips && op == Op::kReadRegister ? WithFlippedBit(result, choice.detail) : result;
}

/// A programmer that does not start answers all the same, and lets go of the shared blocks.
std::int32_t FaultyProgrammer::Refuse(Op op) {
  if (op == Op::kSetVcc) {
    next().SetVcc(0);
    return kSupplyFailed;
  }
  const std::int64_t answered = time_.Now() + usb::kQuestion;
  next().EndRun();
  detour_.reset();
  time_.WaitUntil(answered);
  return op == Op::kOpenProgrammer ? kNoProgrammer : kAdapterAbort;
}

void FaultyProgrammer::usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) {
  const Choice choice = Begin(Op::kUsbBulkRead);
  detour_.reset();
  if (!ConcernsBulkReads(choice.fault)) return next().usbbulkread(destination, status);
  Fire(choice.fault, Op::kUsbBulkRead);
  if (choice.fault != Fault::kSilentTransfer) StartDetour(choice, destination, status);
}

void FaultyProgrammer::StartDetour(const Choice& choice, std::span<std::uint8_t> destination,
                                   std::uint8_t& status) {
  detour_ =
      Detour{.choice = choice, .destination = destination, .status = &status, .due = std::nullopt};
  std::vector<std::uint8_t> bytes(destination.size());
  status_ = 0;
  next().usbbulkread(bytes, status_);
  bytes_ = std::move(bytes);  // the transfer before is over with the start of this one
}

void FaultyProgrammer::DeliverData() {
  auto data = std::span(bytes_).first(bytes_.size() - 1);
  if (detour_->choice.fault == Fault::kShortTransfer) data = data.first(data.size() / 2);
  if (detour_->choice.fault == Fault::kFlippedBit && !data.empty()) {
    const std::size_t bit = detour_->choice.detail % (data.size() * 8);
    data[bit / 8] = static_cast<std::uint8_t>(data[bit / 8] ^ 1U << bit % 8);
  }
  std::ranges::copy(data, detour_->destination.begin());
  *detour_->status = bulk_status::kDone;
  detour_->data_delivered = true;
}

/// Looks at what `next` has brought so far.
void FaultyProgrammer::TakeArrival() {
  if (detour_->choice.fault == Fault::kFailedTransfer && status_ == bulk_status::kDone) {
    status_ = kStatusFailed;
  }
  if (status_ > bulk_status::kLastGood) {
    *detour_->status = status_;
    return detour_.reset();
  }
  if (status_ != bulk_status::kDone || bytes_.back() != kEndMark) return;
  const bool late = detour_->choice.fault == Fault::kLateTransfer;
  detour_->due = time_.Now() + (late ? detour_->choice.detail * Clock::kMillisecond : 0);
}

void FaultyProgrammer::Poll() {
  if (detour_ && !detour_->due) TakeArrival();
  if (!detour_ || !detour_->due) return;
  const std::int64_t now = time_.Now();
  if (now < *detour_->due) return;
  if (!detour_->data_delivered) {
    DeliverData();
    if (detour_->choice.fault == Fault::kShortTransfer) return detour_.reset();
  }
  // The end mark comes in a packet of its own.
  if (now < *detour_->due + usb::kPacket) return;
  detour_->destination.back() = kEndMark;
  detour_.reset();
}

std::optional<std::int64_t> FaultyProgrammer::NextEvent() const {
  const std::optional<std::int64_t> next_event = time_.NextEvent();
  if (!detour_ || !detour_->due) return next_event;
  const std::int64_t own = *detour_->due + (detour_->data_delivered ? usb::kPacket : 0);
  return std::min(next_event.value_or(own), own);
}

void FaultyProgrammer::WaitUntil(std::int64_t time) {
  time_.WaitUntil(time);
  Poll();
}

FaultyProgrammer::Choice PlannedFaults::Choose(Op op) {
  const std::uint32_t nth = ++calls_[static_cast<std::size_t>(op)];
  // Drawn in any case, so that another fault does not shift those of the seed.
  Choice choice = plan_.random ? ChooseRandom(op) : Choice{};
  for (const ScheduledFault& scheduled : plan_.scheduled) {
    if (scheduled.operation != op) continue;
    if (scheduled.nth == nth) return {scheduled.fault};
    if (scheduled.nth == 0) choice = {scheduled.fault};
  }
  return choice;
}

Fault PlannedFaults::Draw(std::span<const std::pair<Fault, double>> rates) {
  double chance = Random() / 4294967296.0;
  for (const auto& [fault, rate] : rates) {
    if (chance < rate) return fault;
    chance -= rate;
  }
  return Fault::kNone;
}

Fault PlannedFaults::DrawFor(Op op, const FaultRates& rates) {
  using Rate = std::pair<Fault, double>;
  const Rate call{Fault::kFailedCall, rates.failed_call};
  const Rate bit{Fault::kFlippedBit, rates.flipped_bit};
  if (op == Op::kUsbBulkRead) {
    return Draw(std::array{call, Rate{Fault::kFailedTransfer, rates.failed_transfer},
                           Rate{Fault::kSilentTransfer, rates.silent_transfer},
                           Rate{Fault::kLateTransfer, rates.late_transfer},
                           Rate{Fault::kShortTransfer, rates.short_transfer}, bit});
  }
  if (HandsOverAByte(op)) return Draw(std::array{call, bit});
  if (CanBeRefused(op)) return Draw(std::array{call, Rate{Fault::kRefusal, rates.refusal}});
  return Draw(std::array{call});
}

FaultyProgrammer::Choice PlannedFaults::ChooseRandom(Op op) {
  Choice choice{DrawFor(op, plan_.random->rates)};
  if (choice.fault == Fault::kLateTransfer) choice.detail = Random() % kLongestDelay + 1;
  if (choice.fault == Fault::kFlippedBit) choice.detail = Random();
  return choice;
}

}  // namespace fliglaf::simulator
