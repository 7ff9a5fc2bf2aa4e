// What the bench takes: each step that is left out of the power-up, and each wait that is left out
// of a write, makes the run fail.
#include <gtest/gtest.h>

#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::RandomBytes;
using test::Tap;
using test::TestHost;

constexpr int kAny = -1;
constexpr std::int32_t kWriteTime = 42;  // of isp51-4k

/// From now on the host's calls that are `step` are left out.
void LeaveOut(TestHost& host, const Tap::Call& step) {
  host.tap.before = [step](const Tap::Call& call) {
    const auto matches = [](int wanted, int is) { return wanted == kAny || wanted == is; };
    return !(call.operation == step.operation && matches(step.value, call.value) &&
             matches(step.target, call.target));
  };
}

TEST(PowerUp, EveryStepAndWaitIsNeeded) {
  for (const Tap::Call& step : {Tap::Call{"SetVcc", kAny, kAny},
                                {"SetVccPin", kAny, kAny},
                                {"SetGndPin", kAny, kAny},
                                {"WriteLatch", 2, 1},  // input mask
                                {"WriteLatch", 0, 2},  // reset pulse
                                {"WriteRegister", 0xAC, 0x8E},
                                {"WriteRegister", 0x53, 0x8E},
                                {"WriteRegister", 0xFF, 0x8E},
                                {"WriteRegister", 1, 0x8F},  // answer to the enable
                                {"QueueDelay", 10 * kWriteTime, 0},
                                {"DelayMs", 40 * kWriteTime, 0}}) {
    TestHost host;
    host.SetImage(RandomBytes(4096, 11));
    ASSERT_EQ(host.Run({11, 6, 8, 3}), 0) << "the whole sequence is good: " << host.log();
    LeaveOut(host, step);
    EXPECT_NE(host.Run({11, 6, 8, 3}), 0) << step.operation << host.log();
  }
}

TEST(PowerUp, EveryStepOfTheOtherSerialFamiliesIsNeeded) {
  const std::pair<const char*, std::vector<Tap::Call>> kSteps[] = {
      {"isp51ee-8k",
       {{"WriteLatch", 8, 2},
        {"DelayMs", 100, 0},
        {"WriteLatch", 0x80, 0},
        {"WriteRegister", 0xFF, 0x8E}}},
      {"isp-word-1k",
       {{"DelayMs", 200, 0}, {"WriteLatch", 0x80, 0}, {"WriteRegister", 0x00, 0x8E}}},
      {"isp-page-16k", {{"WriteRegister", 0x00, 0x8E}}},
      {"isp-frame-2k",
       {{"WriteLatch", 8, 2}, {"WriteLatch", 0x84, 0}, {"WriteRegister", 0xAA, 0x8E}}}};
  for (const auto& [device, own_steps] : kSteps) {
    std::vector<Tap::Call> steps = own_steps;
    steps.insert(
        steps.end(),
        {{"WriteLatch", 2, 1}, {"WriteRegister", 0xAC, 0x8E}, {"WriteRegister", 0x53, 0x8E}});
    if (device != std::string_view("isp-frame-2k")) steps.push_back({"WriteLatch", 0, 2});
    for (const Tap::Call& step : steps) {
      TestHost host(device);
      ASSERT_EQ(host.Run(std::uint8_t{4}), 0) << device;
      LeaveOut(host, step);
      EXPECT_EQ(host.Run(std::uint8_t{4}), 1)
          << device << ": " << step.operation << " " << step.value << " " << step.target;
    }
  }
}

/// Shifter bytes that the power-up did not write keep what the buffer held before.
TEST(PowerUp, EveryShifterByteIsNeeded) {
  for (const int byte : {4, 6, 7, 8, 9}) {
    TestHost host;
    host.SetImage(RandomBytes(4096, 13));
    host.tap.before = [&](const Tap::Call&) {
      host.vars.quorinubuf1[byte] = 0x44;
      return true;
    };
    EXPECT_EQ(host.Run({11, 6}), 1) << byte;
  }
}

}  // namespace
}  // namespace fliglaf
