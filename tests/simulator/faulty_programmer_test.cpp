// The decorator that makes any programmer fail: every kind of fault happens, is counted, and comes
// again with its seed.
#include "simulator/faulty_programmer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using simulator::Fault;
using simulator::FaultRates;
using simulator::SeededFaults;
using test::RandomBytes;
using test::TestHost;
using testing::HasSubstr;

constexpr std::uint8_t kRead = 2, kVerify = 3, kProgram = 6, kErase = 11;
constexpr std::int32_t kBytes = 1024;

/// A host whose programmer and time are behind the decorator.
class FaultyHost {
 public:
  explicit FaultyHost(const FaultRates& rates, std::uint32_t seed = 1)
      : faults(host.tap, host.bench, seed, rates) {
    host.SetImage(image);
    EXPECT_EQ(host.Run({kErase, kProgram}), 0) << host.log();
    host.tap.calls.clear();
    host.vars.quorinMainRtstr.Set(0, u"");
    std::int16_t instance = 7;
    object.bufcommpu4(instance);
  }

  int Run(std::uint8_t code) {
    host.vars.quorinprgresult[1] = code;
    std::int16_t usb = -1;
    object.runMpu4Prg(usb);
    return host.vars.quorinprgresult[0];
  }

  std::vector<std::uint8_t> image = RandomBytes(kBytes, 17);
  TestHost host{kBytes};
  SeededFaults faults;
  platform::PortableDesktop desktop{faults};
  Library library{faults, desktop};
  clsMPU object{library};
};

TEST(FaultyProgrammer, WithoutFaultsChangesNothing) {
  FaultyHost faulty({});
  EXPECT_EQ(faulty.Run(kVerify), 0);
  EXPECT_EQ(faulty.faults.fired().size(), 0U);
}

TEST(FaultyProgrammer, AFailedCallIsAnError) {
  FaultyHost faulty({.failed_call = 0.0003}, 4);
  int failed = 0;
  for (int run = 0; run < 8; ++run) {
    const std::size_t before = faulty.faults.Count(Fault::kFailedCall);
    const int outcome = faulty.Run(kVerify);
    const bool fired = faulty.faults.Count(Fault::kFailedCall) > before;
    EXPECT_EQ(outcome, fired ? 1 : 0) << "run " << run;
    if (!fired) continue;
    ++failed;
    const std::string operation(Row(faulty.faults.fired().back().operation).name);
    EXPECT_THAT(faulty.host.log(), HasSubstr("IoHelper." + operation + " failed: 0x80004005\n"));
  }
  EXPECT_GT(failed, 0);
  EXPECT_LT(failed, 8);
}

TEST(FaultyProgrammer, ATransferThatBringsNothingOrHalfIsAsOftenTriedAsTheFamilyDoes) {
  const struct {
    FaultRates rates;
    Fault fault;
    double seconds;  ///< of each attempt at least
  } cases[] = {{{.failed_transfer = 1}, Fault::kFailedTransfer, 0},
               {{.silent_transfer = 1}, Fault::kSilentTransfer, 5},
               {{.short_transfer = 1}, Fault::kShortTransfer, 5}};
  for (const auto& [rates, fault, seconds] : cases) {
    FaultyHost faulty(rates);
    const std::int64_t start = faulty.faults.Now();
    EXPECT_EQ(faulty.Run(kRead), 3);
    EXPECT_THAT(faulty.host.log(), HasSubstr("read-back fails\n"));
    EXPECT_EQ(faulty.faults.Count(fault), 10U);
    EXPECT_EQ(faulty.faults.fired().size(), 10U);
    EXPECT_GE(static_cast<double>(faulty.faults.Now() - start), 10 * seconds * 1e9);
  }
}

TEST(FaultyProgrammer, ALateTransferIsWaitedForOrGivenUp) {
  int slow = 0;
  for (std::uint32_t seed = 0; seed < 12; ++seed) {
    FaultyHost faulty({.late_transfer = 0.5}, seed);
    const std::int64_t start = faulty.faults.Now();
    EXPECT_EQ(faulty.Run(kVerify), 0) << "all of it came in some attempt: " << faulty.host.log();
    const std::size_t late = faulty.faults.Count(Fault::kLateTransfer);
    const std::size_t reads = faulty.host.tap.Count("usbbulkread");
    EXPECT_LE(late, reads);
    if (late > 0 && late == reads) ++slow;  // the last one was late and counted all the same
    EXPECT_EQ(faulty.faults.Now() - start > 2'000'000'000 || late == 0, true) << seed;
  }
  EXPECT_GT(slow, 0);
}

TEST(FaultyProgrammer, AFlippedBitIsFoundByAVerifyAndNotByARead) {
  FaultyHost verified({.flipped_bit = 0.0004}, 3);
  int found = 0;
  for (int run = 0; run < 8; ++run) {
    const std::size_t before = verified.faults.fired().size();
    const int outcome = verified.Run(kVerify);
    const auto fired = std::span(verified.faults.fired()).subspan(before);
    const bool judged = std::ranges::any_of(
        fired, [](const auto& fault) { return fault.operation != Op::kReadRegister; });
    EXPECT_EQ(outcome, judged ? 1 : 0) << verified.host.log();
    found += outcome;
  }
  EXPECT_GT(found, 0);
  EXPECT_LT(found, 8);

  FaultyHost faulty({.flipped_bit = 0.01});
  EXPECT_EQ(faulty.Run(kRead), 0);
  const std::vector<std::uint8_t> read = faulty.host.image();
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < read.size(); ++i) wrong += read[i] != faulty.image[i] ? 1 : 0;
  EXPECT_GT(wrong, 0U);
  EXPECT_EQ(wrong, faulty.faults.Count(Fault::kFlippedBit)) << "one bit each";
}

TEST(FaultyProgrammer, ASeedRepeatsItsFaultsTheirRunAndItsLog) {
  constexpr FaultRates kAll{.failed_call = 0.0005,
                            .failed_transfer = 0.2,
                            .silent_transfer = 0.2,
                            .late_transfer = 0.2,
                            .short_transfer = 0.2,
                            .flipped_bit = 0.0005};
  const auto run = [&kAll](std::uint32_t seed) {
    FaultyHost faulty(kAll, seed);
    std::vector<int> outcomes;
    for (const std::uint8_t code : {kVerify, kRead, kProgram, kVerify, kVerify}) {
      outcomes.push_back(faulty.Run(code));
    }
    std::vector<std::pair<std::string_view, std::int32_t>> calls;
    for (const auto& call : faulty.host.tap.calls) calls.emplace_back(call.operation, call.value);
    return std::tuple(outcomes, faulty.faults.fired(), calls, faulty.host.log(),
                      faulty.host.image(), faulty.faults.Now());
  };
  std::array<std::size_t, simulator::kFaults> kinds{};
  for (const std::uint32_t seed : {1U, 2U, 3U, 4U}) {
    const auto first = run(seed);
    EXPECT_EQ(first, run(seed));
    EXPECT_NE(std::get<1>(first), std::get<1>(run(seed + 100)));
    for (const auto& fired : std::get<1>(first)) ++kinds[static_cast<std::size_t>(fired.fault)];
  }
  for (std::size_t kind = 1; kind < kinds.size(); ++kind) EXPECT_GT(kinds[kind], 0U) << kind;
}

}  // namespace
}  // namespace fliglaf
