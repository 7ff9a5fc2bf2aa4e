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
constexpr std::int32_t kWriteTime = 42;  // of the profile

TEST(PowerUp, EveryStepAndWaitIsNeeded) {
  for (const Tap::Call& left_out : {Tap::Call{"SetVcc", kAny, kAny},
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
    host.tap.before = [&left_out](const Tap::Call& call) {
      const auto matches = [](int wanted, int is) { return wanted == kAny || wanted == is; };
      return !(call.operation == left_out.operation && matches(left_out.value, call.value) &&
               matches(left_out.target, call.target));
    };
    EXPECT_NE(host.Run({11, 6, 8, 3}), 0) << left_out.operation << host.log();
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
