// Requests of the remote_bitbang protocol on a chip, as a client composes them.
#include "simulator/remote_bitbang.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/bench/bench.h"
#include "tests/support/test_host.h"

namespace fliglaf::simulator {
namespace {

/// A client on a part whose chip erase takes a hundred seconds.
class RemoteBitbangOnAChip : public testing::Test {
 protected:
  static constexpr std::uint32_t kProgEnable = 0x4, kProgCommands = 0x5, kAvrReset = 0xC;
  static constexpr std::uint32_t kReady = 0x200;

  /// Clocks the levels of `tms`, one digit each, TDI low.
  void Walk(std::string_view tms) {
    for (const char level : tms) Send(level == '1' ? "26" : "04");
  }
  /// Shifts from Run-Test/Idle and back; what came out.
  std::uint32_t Scan(std::string_view to_shift, std::uint32_t bits, int count) {
    Walk(to_shift);
    std::uint32_t out = 0;
    for (int i = 0; i < count; ++i) {
      const int low = (i == count - 1 ? 2 : 0) | static_cast<int>(bits >> i & 1);
      out |= static_cast<std::uint32_t>(Send(std::to_string(low) + "R") == "1") << i;
      Send(std::to_string(low | 4));
    }
    Walk("10");
    return out;
  }
  std::uint32_t Instruction(std::uint32_t code) { return Scan("1100", code, 4); }
  std::uint32_t Data(std::uint32_t bits, int count) { return Scan("100", bits, count); }

  std::string Send(std::string_view requests) {
    std::string answers;
    protocol.Take(requests, answers);
    return answers;
  }

  static DeviceProfile Device() {
    DeviceProfile device = test::Known("jtag-byte-16k");
    device.chip.erase_ms = 100'000;
    return device;
  }

  Bench bench{Device(), 0, {}};
  std::unique_ptr<JtagCable> cable = bench.AttachJtagCable();
  RemoteBitbang protocol{*cable};
};

TEST_F(RemoteBitbangOnAChip, MovesLinesAndWaits) {
  Walk("111110");
  EXPECT_EQ(Data(0, 32), 0x0940303FU);
  EXPECT_EQ(Send("BbrstuR"), "0") << "TDO is not driven outside of the Shift states";
  EXPECT_EQ(Instruction(kAvrReset), 1U);
  Data(1, 1);
  Instruction(kProgEnable);
  Data(0xA370, 16);
  Instruction(kProgCommands);
  for (const std::uint32_t command : {0x2380U, 0x3180U, 0x3380U}) Data(command, 15);
  EXPECT_EQ(Data(0x3380, 15) & kReady, 0U);
  Send(std::string(99'000, 'Z'));
  EXPECT_EQ(Data(0x3380, 15) & kReady, 0U);
  Send(std::string(999, 'Z') + std::string(1000, 'z'));
  EXPECT_EQ(Data(0x3380, 15) & kReady, kReady);
}

TEST_F(RemoteBitbangOnAChip, EndsAtQuitAndAtWhatIsNoRequest) {
  try {
    Send("0R8");
    ADD_FAILURE() << "8 is not a request";
  } catch (const UnknownRequest& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr("0x38"));
  }
  EXPECT_FALSE(protocol.quit());
  EXPECT_EQ(Send("RQRx"), "0");
  EXPECT_TRUE(protocol.quit());
}

}  // namespace
}  // namespace fliglaf::simulator
