#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <span>
#include <vector>

#include "platform/portable/time_source.h"
#include "usb/components/forwarding_programmer.h"

namespace fliglaf::simulator {

enum class Fault : std::uint8_t {
  kNone,
  kFailedCall,      ///< the component returns an error; the call has done nothing
  kFailedTransfer,  ///< a bulk read reports its failure
  kSilentTransfer,  ///< a bulk read never reports
  kLateTransfer,    ///< a bulk read brings everything, later
  kShortTransfer,   ///< a bulk read brings half of the data, reports success, and no end mark
  kFlippedBit,      ///< one bit of what is read or judged is wrong
};
inline constexpr std::size_t kFaults = 7;

/// Sits before any programmer and does wrong what it is told to. It is the desktop's time source as
/// well, since what comes late has to come some time.
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
  /// Every fault that there was, in order.
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
    std::uint32_t detail = 0;  ///< how many ms late; which bit is flipped, modulo those there are
  };
  /// What goes wrong with the call that is being made. A fault that the operation cannot have is
  /// none.
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
  double failed_transfer = 0;
  double silent_transfer = 0;
  double late_transfer = 0;  ///< by up to 10 s
  double short_transfer = 0;
  double flipped_bit = 0;  ///< in a bulk read, a register that is read, a byte that is judged
};

/// Faults at random; the same seed repeats them.
class SeededFaults : public FaultyProgrammer {
 public:
  SeededFaults(Programmer& next, platform::TimeSource& time, std::uint32_t seed,
               const FaultRates& rates)
      : FaultyProgrammer(next, time), random_(seed), rates_(rates) {}

 protected:
  Choice Choose(Op op) override;

 private:
  std::uint32_t Random() { return static_cast<std::uint32_t>(random_()); }
  /// One of the faults with these rates, or none.
  Fault Draw(std::span<const std::pair<Fault, double>> rates);

  std::mt19937 random_;
  FaultRates rates_;
};

}  // namespace fliglaf::simulator
