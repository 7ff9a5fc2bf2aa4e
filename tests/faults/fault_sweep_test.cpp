// Every operation of every family and both engines, with one fault: whichever call fails, whichever
// transfer goes wrong, whenever a stop comes and whatever byte is wrong, the run ends as it should,
// tells what has happened, leaves nothing powered, and the next one works. FLIGLAF_EXTENDED=1 in
// the environment runs all of the sweep in the place of a part that is spread evenly over it.
#include <cstdlib>
#include <iostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/faulty_programmer.h"
#include "tests/support/small_devices.h"

namespace fliglaf {
namespace {

using simulator::Fault;
using simulator::FaultyProgrammer;
using test::Narrow;
using test::SmallDevice;
using test::TestHost;
using testing::EndsWith;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRead = 2, kVerify = 3, kBlankCheck = 4, kCompare = 5, kProgram = 6;

/// One fault, at its nth opportunity.
struct Point {
  enum class Kind : std::uint8_t {
    kFailedCall,
    kFailedTransfer,
    kSilentTransfer,
    kLate,     ///< within the time that a transfer is waited for
    kTooLate,  ///< beyond it
    kWrongByte,
    kStop,
  };
  Kind kind;
  std::size_t nth;  ///< from 1; 0 never
};
using Kind = Point::Kind;
constexpr Kind kKinds[] = {Kind::kFailedCall, Kind::kFailedTransfer, Kind::kSilentTransfer,
                           Kind::kLate,       Kind::kTooLate,        Kind::kWrongByte,
                           Kind::kStop};

void PrintTo(const Point& point, std::ostream* out) {
  constexpr std::string_view kNames[] = {"failed call",   "failed transfer",   "silent transfer",
                                         "late transfer", "too late transfer", "wrong byte",
                                         "stop"};
  *out << kNames[static_cast<std::size_t>(point.kind)] << " " << point.nth;
}

/// How many opportunities a request has.
struct Opportunities {
  std::size_t calls = 0;
  std::size_t transfers = 0;
  std::size_t bytes = 0;
  std::size_t turns = 0;

  [[nodiscard]] std::size_t Of(Kind kind) const {
    if (kind == Kind::kFailedCall) return calls;
    if (kind == Kind::kWrongByte) return bytes;
    if (kind == Kind::kStop) return turns;
    return transfers;
  }
};

class OneFault : public FaultyProgrammer {
 public:
  OneFault(Programmer& next, platform::TimeSource& time, Op judging)
      : FaultyProgrammer(next, time), judging_(judging) {}

  Point point{};
  Opportunities seen;

 protected:
  Choice Choose(Op op) override {
    ++seen.calls;
    if (op == Op::kUsbBulkRead) ++seen.transfers;
    if (op == judging_) ++seen.bytes;
    if (point.kind == Kind::kStop || seen.Of(point.kind) != point.nth) return {};
    if (point.kind == Kind::kFailedCall) return {Fault::kFailedCall};
    if (point.kind == Kind::kWrongByte) return {op == judging_ ? Fault::kFlippedBit : Fault::kNone};
    if (op != Op::kUsbBulkRead) return {};
    switch (point.kind) {
      case Kind::kFailedTransfer:
        return {Fault::kFailedTransfer};
      case Kind::kSilentTransfer:
        return {Fault::kSilentTransfer};
      default:
        return {Fault::kLateTransfer, point.kind == Kind::kLate ? 4000U : 6000U};
    }
  }

 private:
  Op judging_;
};

struct Outcome {
  int result = 0;
  int lost_blocks = 0;
  std::string log;  ///< without the line of the elapsed time
  Bytes image;

  bool operator==(const Outcome&) const = default;
};

std::string WithoutTime(std::string log) {
  const std::size_t end = log.rfind("Sec\n");
  if (end == std::string::npos) return log;
  const std::size_t start = log.rfind(">> ", end);
  return log.erase(start, end + 4 - start);
}

/// A host behind a programmer with one fault, whose chip and image are as they were before each
/// request.
class SweepBench {
 public:
  explicit SweepBench(const SmallDevice& small)
      : parallel_(small.parallel),
        host_(small.device),
        faulty_(host_.tap, host_.bench, parallel_ ? Op::kReadRegister : Op::kBlockTransfer) {
    test::Prepare(host_, small);
    host_.bench.programmer().on_turn = [this] { desktop_.DoEvents(); };
    desktop_.on_turn = [this] {
      ++faulty_.seen.turns;
      const Point& point = faulty_.point;
      if (point.kind == Kind::kStop && faulty_.seen.turns == point.nth) {
        host_.vars.quorinprgresult[0] = 2;
      }
      return false;
    };
    std::int16_t instance = 7;
    object_.bufcommpu4(instance);
    image_ = host_.image();
    blank_ = Cells();
    Run(kProgram, {});
    programmed_ = Cells();
  }

  /// Runs a request on a chip that is as the operation wants it.
  Outcome RunOn(std::uint8_t code, const Point& point) {
    SetCells(code == kBlankCheck || code == kProgram ? blank_ : programmed_);
    if (code == kCompare && !host_.bench.chip().Memory().empty()) {
      host_.bench.chip().Memory()[0].bytes[1] ^= 0x80;
    }
    host_.SetImage(image_);
    return Run(code, point);
  }

  Outcome Run(std::uint8_t code, const Point& point) {
    host_.vars.quorinMainRtstr.Set(0, u"");
    host_.tap.calls.clear();
    faulty_.point = point;
    faulty_.seen = {};
    faults_before_ = faulty_.fired().size();
    host_.vars.quorinprgresult[1] = code;
    host_.vars.quorinubuflg[1] = 0;
    std::int16_t usb = parallel_ ? 0 : -1;
    object_.runMpu4Prg(usb);
    return {host_.vars.quorinprgresult[0], host_.vars.quorinubuflg[1], WithoutTime(host_.log()),
            host_.image()};
  }

  [[nodiscard]] const Opportunities& seen() const { return faulty_.seen; }
  /// The operation at which the last request's fault fired; empty when none did.
  [[nodiscard]] std::string_view FiredAt() const {
    if (faulty_.fired().size() == faults_before_) return {};
    return Row(faulty_.fired().back().operation).name;
  }
  [[nodiscard]] std::string_view LastCall() const { return host_.tap.calls.back().operation; }
  [[nodiscard]] std::size_t Count(std::string_view operation) const {
    return host_.tap.Count(operation);
  }
  [[nodiscard]] bool SocketIsOff() const { return host_.bench.socket_is_off(); }

 private:
  std::vector<Bytes> Cells() {
    std::vector<Bytes> cells;
    for (const auto& area : host_.bench.chip().Memory()) {
      cells.emplace_back(area.bytes.begin(), area.bytes.end());
    }
    return cells;
  }
  void SetCells(const std::vector<Bytes>& cells) {
    std::size_t i = 0;
    for (const auto& area : host_.bench.chip().Memory()) {
      std::ranges::copy(cells[i++], area.bytes.begin());
    }
  }

  bool parallel_;
  TestHost host_;
  OneFault faulty_;
  platform::PortableDesktop desktop_{faulty_};
  Library library_{faulty_, desktop_};
  clsMPU object_{library_};
  Bytes image_;
  std::vector<Bytes> blank_;
  std::vector<Bytes> programmed_;
  std::size_t faults_before_ = 0;
};

bool Extended() {
  const char* const set = std::getenv("FLIGLAF_EXTENDED");
  return set != nullptr && *set != '\0';
}

/// Every opportunity, or `limit` of them spread evenly, the first by `seed`.
std::vector<std::size_t> Selected(std::size_t opportunities, std::size_t limit, std::size_t seed) {
  const std::size_t step = std::max<std::size_t>((opportunities + limit - 1) / limit, 1);
  std::vector<std::size_t> selected;
  for (std::size_t nth = 1 + seed % step; nth <= opportunities; nth += step) {
    selected.push_back(nth);
  }
  return selected;
}

class FaultSweep : public testing::TestWithParam<SmallDevice> {
 protected:
  void Sweep(std::uint8_t code) {
    const Outcome good = bench_.RunOn(code, {});
    ASSERT_EQ(good.result, 0) << good.log;
    const Opportunities opportunities = bench_.seen();
    for (const Kind kind : kKinds) {
      const std::size_t whole = opportunities.Of(kind);
      const std::size_t limit = LimitOf(kind, code, opportunities.calls);
      whole_ += whole;
      if (limit == 0) continue;
      for (const std::size_t nth : Selected(whole, limit, code * 7919U)) {
        ++swept_;
        Try(code, {kind, nth}, good);
        if (HasFailure()) return;
      }
    }
  }

  /// How many faults of a kind are tried. Of a request that makes so many calls that trying all of
  /// them would take days, a part in any case: without the extended mode one kind an operation.
  static std::size_t LimitOf(Kind kind, std::uint8_t code, std::size_t calls) {
    constexpr std::size_t kManyCalls = 10'000;
    if (Extended()) return calls > kManyCalls ? 50 : std::max(calls, std::size_t{1});
    if (calls > kManyCalls) return kind == kKinds[code % std::size(kKinds)] ? 1 : 0;
    return 4;
  }

  void Try(std::uint8_t code, const Point& point, const Outcome& good) {
    SCOPED_TRACE(testing::Message()
                 << "operation " << int{code} << ", " << testing::PrintToString(point));
    const Outcome outcome = bench_.RunOn(code, point);
    SCOPED_TRACE(outcome.log);
    if (point.kind != Kind::kStop) {
      ASSERT_NE(bench_.FiredAt(), "") << "the fault did not fire";
    }
    EXPECT_EQ(bench_.LastCall(), "EndRun");
    EXPECT_TRUE(bench_.SocketIsOff());
    CheckTold(code, point, outcome, good);

    const std::uint8_t next = GetParam().device.config_words > 0 ? std::uint8_t{8} : kRead;
    const Outcome after = bench_.Run(next, {});
    EXPECT_EQ(after.result, 0) << "the next request: " << after.log;
    EXPECT_THAT(after.log, HasSubstr(">>op" + std::to_string(next) + " ok\n"));
  }

  void CheckTold(std::uint8_t code, const Point& point, const Outcome& outcome,
                 const Outcome& good) {
    switch (point.kind) {
      case Kind::kFailedCall:
        EXPECT_EQ(outcome.result, 1);
        EXPECT_THAT(outcome.log, EndsWith(">>IoHelper." + std::string(bench_.FiredAt()) +
                                          " failed: 0x80004005\n"));
        return;
      case Kind::kLate:
        EXPECT_EQ(outcome, good);
        return;
      case Kind::kStop:
        return CheckStopped(outcome);
      case Kind::kWrongByte:
        return CheckWrongByte(code, point, outcome, good);
      default:
        // Family 1 captures the block again.
        EXPECT_EQ(outcome.lost_blocks, GetParam().device.family == 1 ? 0 : 1);
        return CheckEnding(code, outcome);
    }
  }

  /// Result, line of the log and signal agree.
  void CheckEnding(std::uint8_t code, const Outcome& outcome) {
    const std::string name = ">>op" + std::to_string(code);
    if (outcome.result == 0) {
      EXPECT_THAT(outcome.log, HasSubstr(name + " ok\n"));
    } else {
      ASSERT_EQ(outcome.result, 1);
      EXPECT_THAT(outcome.log, HasSubstr(name + " failed\n"));
    }
    EXPECT_EQ(bench_.Count("SignalPass"), outcome.result == 0 ? 1U : 0U);
    EXPECT_EQ(bench_.Count("SignalFail"), outcome.result == 0 ? 0U : 1U);
  }

  /// A stop that the parallel engine finds while it writes is reported by the verify that follows.
  void CheckStopped(const Outcome& outcome) {
    EXPECT_EQ(bench_.Count("SignalFail"), 1U);
    if (outcome.result == 1 && GetParam().parallel) {
      EXPECT_THAT(outcome.log, HasSubstr("Device Address:"));
    } else {
      EXPECT_EQ(outcome.result, 2);
      EXPECT_THAT(outcome.log, HasSubstr("stopped\n"));
    }
  }

  void CheckWrongByte(std::uint8_t code, const Point& point, const Outcome& outcome,
                      const Outcome& good) {
    CheckEnding(code, outcome);
    // Of the parallel engine, the first is the answer to the programming enable, which nobody
    // looks at; two captures of the configuration mode likewise.
    if (GetParam().parallel && point.nth == 1) {
      EXPECT_EQ(outcome, good);
      return;
    }
    if (GetParam().device.config_words > 0) {
      EXPECT_EQ(outcome.result, 0);
      return;
    }
    // Programming families 8 to 11 reads the two lock bytes into the image before it verifies.
    const int family = GetParam().device.family;
    const bool reads_lock = code == kProgram && family >= 8 && family <= 11 && point.nth <= 2;
    switch (reads_lock ? kRead : code) {
      case kRead:
        EXPECT_EQ(outcome.result, 0);
        EXPECT_NE(outcome.image, good.image);
        return;
      case kCompare:
        EXPECT_EQ(outcome.result, 0);
        EXPECT_NE(outcome.log, good.log);
        return;
      default:
        EXPECT_EQ(outcome.result, 1);
        EXPECT_THAT(outcome.log, HasSubstr("Device Address:"));
    }
  }

  SweepBench bench_{GetParam()};
  std::size_t whole_ = 0;
  std::size_t swept_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Devices, FaultSweep, testing::ValuesIn(test::SmallDevices()),
                         [](const auto& device) { return device.param.name; });

TEST_P(FaultSweep, EveryOperation) {
  for (const std::uint8_t code : GetParam().codes) {
    Sweep(code);
    if (HasFailure()) return;
  }
  std::cout << GetParam().name << ": " << swept_ << " of " << whole_ << " faults swept\n";
}

}  // namespace
}  // namespace fliglaf
