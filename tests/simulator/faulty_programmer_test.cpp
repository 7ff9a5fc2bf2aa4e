// The decorator that makes any programmer fail: faults happen where they are planned, and random
// ones come again with their seed.
#include "simulator/faulty_programmer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using simulator::Fault;
using simulator::FaultPlan;
using simulator::FaultRates;
using simulator::PlannedFaults;
using test::RandomBytes;
using test::TestHost;
using testing::HasSubstr;

constexpr std::uint8_t kRead = 2, kVerify = 3, kProgram = 6, kErase = 11;
constexpr std::int32_t kBytes = 1024;

/// A host whose programmer and time are behind the decorator.
class FaultyHost {
 public:
  explicit FaultyHost(FaultPlan plan) : faults(host.tap, host.bench, std::move(plan)) {
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
  TestHost host{test::Sized("isp51-4k", kBytes)};
  PlannedFaults faults;
  platform::PortableDesktop desktop{faults};
  Library library{faults, desktop};
  clsMPU object{library};
};

TEST(FaultyProgrammer, FaultsOfOneOperationCombine) {
  FaultyHost faulty({.scheduled = {{Fault::kFailedCall, Op::kSetVcc, 2},
                                   {Fault::kFailedCall, Op::kSetVcc, 4},
                                   {Fault::kRefusal, Op::kSetVcc, 3},
                                   {Fault::kFailedTransfer, Op::kUsbBulkRead},
                                   {Fault::kSilentTransfer, Op::kUsbBulkRead, 2}}});
  for (const int result : {3, 1, 3, 1}) EXPECT_EQ(faulty.Run(kRead), result);
  EXPECT_THAT(faulty.host.log(), HasSubstr("IoHelper.SetVcc failed: 0x80004005\n"));
  EXPECT_EQ(faulty.faults.Count(Fault::kFailedTransfer), 19U);
  EXPECT_EQ(faulty.faults.Count(Fault::kSilentTransfer), 1U);
  EXPECT_EQ(faulty.faults.Count(Fault::kFailedCall), 2U);
  EXPECT_EQ(faulty.faults.Count(Fault::kRefusal), 1U);
}

TEST(FaultyProgrammer, ATransferThatBringsNothingOrHalfIsAsOftenTriedAsTheFamilyDoes) {
  const struct {
    Fault fault;
    double seconds;  ///< of each attempt at least
  } cases[] = {
      {Fault::kFailedTransfer, 0}, {Fault::kSilentTransfer, 5}, {Fault::kShortTransfer, 5}};
  for (const auto& [fault, seconds] : cases) {
    FaultyHost faulty({.scheduled = {{fault, Op::kUsbBulkRead}}});
    const std::int64_t start = faulty.faults.Now();
    EXPECT_EQ(faulty.Run(kRead), 3);
    EXPECT_THAT(faulty.host.log(), HasSubstr("read-back fails\n"));
    EXPECT_EQ(faulty.faults.Count(fault), 10U);
    EXPECT_EQ(faulty.faults.fired().size(), 10U);
    EXPECT_GE(static_cast<double>(faulty.faults.Now() - start), 10 * seconds * 1e9);
    EXPECT_EQ(faulty.host.tap.calls.back().operation, "EndRun");
  }
}

TEST(FaultyProgrammer, AFlippedBitIsNotFoundByARead) {
  FaultyHost faulty({.random = {{.seed = 1, .rates = {.flipped_bit = 0.01}}}});
  EXPECT_EQ(faulty.Run(kRead), 0);
  const std::vector<std::uint8_t> read = faulty.host.image();
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < read.size(); ++i) wrong += read[i] != faulty.image[i] ? 1 : 0;
  EXPECT_GT(wrong, 0U);
  EXPECT_EQ(wrong, faulty.faults.Count(Fault::kFlippedBit)) << "one bit each";
}

TEST(FaultyProgrammer, ASeedRepeatsItsFaultsTheirRunAndItsLog) {
  constexpr FaultRates kAll{.failed_call = 0.0005,
                            .refusal = 0.1,
                            .failed_transfer = 0.2,
                            .silent_transfer = 0.2,
                            .late_transfer = 0.2,
                            .short_transfer = 0.2,
                            .flipped_bit = 0.0005};
  const auto run = [&kAll](std::uint32_t seed) {
    FaultyHost faulty({.random = {{seed, kAll}}});
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
