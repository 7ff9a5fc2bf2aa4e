// What the bench takes: each step that is left out of the power-up, and each wait that is left out
// of a write, makes the run fail.
#include <gtest/gtest.h>

#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::RandomBytes;
using test::Tap;
using test::TestHost;

struct Omission {
  const char* name;
  bool (*left_out)(const Tap::Call&);
};

bool Is(const Tap::Call& call, std::string_view operation, int value, int target) {
  return call.operation == operation && call.value == value && call.target == target;
}

void PrintTo(const Omission& omission, std::ostream* out) { *out << omission.name; }

class LeftOut : public testing::TestWithParam<Omission> {};

TEST_P(LeftOut, TheRunFails) {
  TestHost host;
  host.SetImage(RandomBytes(4096, 11));
  ASSERT_EQ(host.Run({11, 6, 8, 3}), 0) << "the whole sequence is good: " << host.log();
  host.tap.before = [](const Tap::Call& call) { return !GetParam().left_out(call); };
  EXPECT_NE(host.Run({11, 6, 8, 3}), 0) << host.log();
}

INSTANTIATE_TEST_SUITE_P(
    Steps, LeftOut,
    testing::Values(
        Omission{"supply", [](const Tap::Call& c) { return c.operation == "SetVcc"; }},
        Omission{"supply pin", [](const Tap::Call& c) { return c.operation == "SetVccPin"; }},
        Omission{"ground", [](const Tap::Call& c) { return c.operation == "SetGndPin"; }},
        Omission{"input mask", [](const Tap::Call& c) { return Is(c, "WriteLatch", 2, 1); }},
        Omission{"reset pulse", [](const Tap::Call& c) { return Is(c, "WriteLatch", 0, 2); }},
        Omission{"enable AC",
                 [](const Tap::Call& c) { return Is(c, "WriteRegister", 0xAC, 0x8E); }},
        Omission{"enable 53",
                 [](const Tap::Call& c) { return Is(c, "WriteRegister", 0x53, 0x8E); }},
        Omission{"enable FF",
                 [](const Tap::Call& c) { return Is(c, "WriteRegister", 0xFF, 0x8E); }},
        Omission{"enable answer",
                 [](const Tap::Call& c) { return Is(c, "WriteRegister", 1, 0x8F); }},
        Omission{
            "byte write time",
            [](const Tap::Call& c) { return Is(c, "QueueDelay", 10 * TestHost::kWriteTime, 0); }},
        Omission{"erase and lock time", [](const Tap::Call& c) {
                   return Is(c, "DelayMs", 40 * TestHost::kWriteTime, 0);
                 }}));

/// The wait after a lock write alone: what follows in the sequence needs it.
TEST(LeftOutOnce, LockTime) {
  TestHost host;
  host.SetImage(RandomBytes(4096, 12));
  ASSERT_EQ(host.Run({11, 6}), 0);
  host.tap.before = [](const Tap::Call& call) {
    return !Is(call, "DelayMs", 40 * TestHost::kWriteTime, 0);
  };
  EXPECT_EQ(host.Run({8, 3}), 1) << host.log();
  host.tap.before = nullptr;
  EXPECT_EQ(host.Run({8, 3}), 0) << host.log();
}

/// Shifter bytes that the power-up did not write keep what the buffer held before.
class ShifterByte : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Bytes, ShifterByte, testing::Values(4, 6, 7, 8, 9));

TEST_P(ShifterByte, IsNeeded) {
  for (const std::uint8_t before : {std::uint8_t{0x00}, std::uint8_t{0x44}}) {
    if (GetParam() == 4 && before == 0) continue;  // the line register is number 0
    TestHost host;
    host.SetImage(RandomBytes(4096, 13));
    host.tap.before = [&](const Tap::Call&) {
      host.vars.quorinubuf1[GetParam()] = before;
      return true;
    };
    EXPECT_EQ(host.Run({11, 6}), 1) << "byte was " << int{before};
  }
}

}  // namespace
}  // namespace fliglaf
