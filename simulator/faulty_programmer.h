#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <span>
#include <utility>
#include <vector>

#include "platform/portable/time_source.h"
#include "usb/components/forwarding_programmer.h"

namespace fliglaf::simulator {

enum class Fault : std::uint8_t {
  kNone,
  kFailedCall,      ///< the component returns an error; the call has done nothing
  kRefusal,         ///< no programmer is found, its adapter is missing or its supply fails
  kFailedTransfer,  ///< a bulk read reports its failure when its data are due
  kSilentTransfer,  ///< a bulk read never reports
  kLateTransfer,    ///< a bulk read brings everything, later
  kShortTransfer,   ///< a bulk read brings half of the data, reports success, and no end mark
  kFlippedBit,      ///< one bit of what is read or judged is wrong
};
inline constexpr std::size_t kFaults = 8;

/// Stands in front of any programmer and makes its calls go wrong. It is the desktop's time source
/// as well, since a late transfer comes in the time of the programmer.
class FaultyProgrammer : public ForwardingProgrammer, public platform::TimeSource {
 public:
  /// `time` is that of `next`.
  FaultyProgrammer(Programmer& next, platform::TimeSource& time)
      : ForwardingProgrammer(next), time_(time) {}

  struct Fired {
    Fault fault;
    std::uint64_t call;  ///< number of the call, from 1
    Op operation;

    bool operator==(const Fired&) const = default;
  };
  /// Every fault that happened, in order.
  [[nodiscard]] const std::vector<Fired>& fired() const { return fired_; }
  [[nodiscard]] std::size_t Count(Fault fault) const;

  void usbcomwrite(std::span<const std::uint8_t> packet) override;
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override;

  [[nodiscard]] std::int64_t Now() const override { return time_.Now(); }
  [[nodiscard]] std::optional<std::int64_t> NextEvent() const override;
  void WaitUntil(std::int64_t time) override;

 protected:
  struct Choice {
    Fault fault = Fault::kNone;
    std::uint32_t detail = 0;  ///< how many ms late; which bit is flipped, modulo their number
  };
  /// What goes wrong with the call that is being made. A fault that the operation cannot have is
  /// ignored.
  virtual Choice Choose(Op op) = 0;

  std::int32_t Perform(Op op, const Arguments& arguments) override;

 private:
  /// A bulk read that does not go straight to its destination.
  struct Detour {
    Choice choice;
    std::span<std::uint8_t> destination;
    std::uint8_t* status;
    std::optional<std::int64_t> due;  ///< of the data, once they have come
    bool data_delivered = false;
  };

  Choice Begin(Op op);
  void Fire(Fault fault, Op op);
  std::int32_t Refuse(Op op);
  void StartDetour(const Choice& choice, std::span<std::uint8_t> destination, std::uint8_t& status);
  void TakeArrival();
  void Poll();
  void DeliverData();

  platform::TimeSource& time_;
  std::uint64_t calls_ = 0;
  std::vector<Fired> fired_;
  std::optional<Detour> detour_;
  /// Where `next` puts the bytes of the last detour, as long as it may still do so.
  std::vector<std::uint8_t> bytes_;
  std::uint8_t status_ = 0;
};

/// How often a fault happens: 0 never, 1 at every call that can have it.
struct FaultRates {
  double failed_call = 0;
  double refusal = 0;
  double failed_transfer = 0;
  double silent_transfer = 0;
  double late_transfer = 0;  ///< by up to 10 s
  double short_transfer = 0;
  double flipped_bit = 0;  ///< in a bulk read, a register that is read, a byte that is judged
};

struct ScheduledFault {
  Fault fault;
  Op operation;
  std::uint32_t nth = 0;  ///< which call of the operation, from 1; 0: every call
};

/// Faults at random; the same seed repeats them.
struct RandomFaults {
  std::uint32_t seed = 0;
  FaultRates rates;
};

/// What goes wrong with the calls of a programmer. Where several faults fall on one call, the one
/// for that call comes first, then one for every call, then a random one.
struct FaultPlan {
  std::vector<ScheduledFault> scheduled = {};
  std::optional<RandomFaults> random = std::nullopt;

  [[nodiscard]] bool empty() const { return scheduled.empty() && !random; }
};

class PlannedFaults : public FaultyProgrammer {
 public:
  PlannedFaults(Programmer& next, platform::TimeSource& time, FaultPlan plan)
      : FaultyProgrammer(next, time),
        plan_(std::move(plan)),
        random_(plan_.random.value_or(RandomFaults{}).seed) {}

  [[nodiscard]] const FaultPlan& plan() const { return plan_; }
  /// How often an operation has been called.
  [[nodiscard]] std::uint32_t Calls(Op op) const { return calls_[static_cast<std::size_t>(op)]; }

 protected:
  Choice Choose(Op op) override;

 private:
  std::uint32_t Random() { return static_cast<std::uint32_t>(random_()); }
  /// One of the faults with these rates, or none.
  Fault Draw(std::span<const std::pair<Fault, double>> rates);
  Fault DrawFor(Op op, const FaultRates& rates);
  Choice ChooseRandom(Op op);

  FaultPlan plan_;
  std::mt19937 random_;
  std::array<std::uint32_t, kOperationCount> calls_{};
};

}  // namespace fliglaf::simulator
