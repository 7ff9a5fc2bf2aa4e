// Family 1 end to end: host object, USB engine, programmer on lines, chip.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::RandomBytes;
using test::Tap;
using test::TestHost;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::uint8_t kRead = 2, kBlank = 4, kCompare = 5, kProgram = 6, kLock3 = 10, kErase = 11;

TEST(IspFam1, ACompareIsLoggedInTwoColumns) {
  TestHost host;
  const auto image = RandomBytes(4096, 1);
  host.SetImage(image);
  ASSERT_EQ(host.Run({kErase, kProgram}), 0) << host.log();
  EXPECT_THAT(host.log(), StartsWith(">><op11>\n>><Blank Check>\n>>op11 ok\n>><op6>\n>><Verify>\n"
                                     ">>op6 ok\n>> "));
  EXPECT_EQ(host.tap.Count("EndRun"), 2U) << "program ends the run once more before its verify";
  host.vars.quorinibuffer[0x1A7] = static_cast<std::uint8_t>(image[0x1A7] ^ 0xFF);
  EXPECT_EQ(host.Run(kCompare), 0);
  EXPECT_THAT(host.log(), StartsWith("h1\nh2\n>> 000001A7H  "));
  EXPECT_THAT(host.log(), HasSubstr("H        000001A7H  "));
  EXPECT_EQ(host.vars.quorinMainRtstr[1], u"");
}

TEST(IspFam1Checks, NameTheFirstByteThatIsWrong) {
  TestHost host("isp51-4k", {.stuck_bits = {{0x203, 4, true}}});
  host.SetImage(std::vector<std::uint8_t>(4096, 0x00));
  EXPECT_EQ(host.Run({kErase, kProgram}), 1);
  EXPECT_THAT(host.log(), HasSubstr(">>Device Address:00000203H  Device Data:10H  Buffer "
                                    "Address:00000203H  Buffer Data:00H\n>>op6 failed\n"));
  EXPECT_EQ(host.tap.Count("SignalFail"), 1U);

  EXPECT_EQ(host.Run(kBlank), 1);
  EXPECT_THAT(host.log(), HasSubstr(">>Device Address:00000000H  Device Data:00H\n>>op4 failed\n"));
}

TEST(IspFam1Checks, VerifyAtBothSuppliesStopsAtTheFirstFailure) {
  TestHost host;
  host.vars.quorinwlverifyvcc[0] = 2;
  host.SetImage(RandomBytes(4096, 2));
  EXPECT_EQ(host.Run({kErase, kProgram}), 0) << host.log();
  EXPECT_THAT(host.log(), HasSubstr(">><Verify(VCC:5.5V) >\n>><Verify(VCC:4.5V) >\n>>op6 ok\n"));

  host.vars.quorinwlverifyvcc[0] = 5;  // 25 % up: more than the part is made for
  EXPECT_EQ(host.Run({kErase, kProgram}), 1);
  EXPECT_THAT(host.log(), HasSubstr("(VCC:6.25V)"));
  EXPECT_THAT(host.log(), testing::Not(HasSubstr("(VCC:3.75V)")));
}

TEST(IspFam1Lock, TheThirdLevelTakesTheOnesBeforeIt) {
  TestHost host;
  ASSERT_EQ(host.Run(kLock3), 0);
  EXPECT_EQ(host.cells("lock")[0], 3);
}

TEST(IspFam1Stop, EndsProgrammingWithoutVerify) {
  TestHost host;
  host.SetImage(RandomBytes(4096, 4));
  int turns = 0;
  host.desktop.on_turn = [&] {
    if (++turns == 4) host.vars.quorinprgresult[0] = 2;  // after the third page
    return turns == 4;
  };
  EXPECT_EQ(host.Run(kProgram), 2);
  EXPECT_THAT(host.log(), StartsWith(">><op6>\nstopped\n>> "));
  EXPECT_EQ(host.tap.Count("SignalFail"), 1U);
  EXPECT_EQ(host.tap.Count("usbbulkread"), 0U);
  EXPECT_EQ(host.tap.calls.back().operation, "EndRun");
  EXPECT_EQ(host.vars.quorinprgmode[1], 18) << "100 x 752 div 4096, byte 240 of the third page";
}

TEST(IspFam1Stop, IsNotLostWhileATransferHangs) {
  const simulator::FaultPlan faults{{{simulator::Fault::kSilentTransfer, Op::kUsbBulkRead}}};
  TestHost host("isp51-4k", {.programmer = faults});
  bool pressed = false;
  host.desktop.on_turn = [&] {
    if (pressed || host.tap.Count("usbbulkread") == 0) return false;
    host.vars.quorinprgresult[0] = 2;
    return pressed = true;
  };
  EXPECT_EQ(host.Run(kRead), 2) << host.log();
  EXPECT_EQ(host.tap.Count("usbbulkread"), 1U);
}

TEST(IspFam1Stop, EndsACompareThatLists) {
  TestHost host;
  host.SetImage(std::vector<std::uint8_t>(4096, 0x00));
  host.bench.programmer().on_turn = [&] { host.desktop.DoEvents(); };
  host.desktop.on_turn = [&] {
    if (host.tap.Count("BlockTransfer") < 10) return false;
    host.vars.quorinprgresult[0] = 2;
    return true;
  };
  EXPECT_EQ(host.Run(kCompare), 2);
  EXPECT_EQ(host.tap.Count("BlockTransfer"), 10U);
}

TEST(IspFam1Signature, RetryReadsAllOfItAgain) {
  TestHost host;
  host.vars.quorinchipidtestmode[0] = -1;
  host.vars.quorincompid[0] = 0x1E;
  host.vars.quorintypeid[0] = 0x51;
  bool contact = false;  // the socket is bad until the box has been seen
  host.tap.before = [&](const Tap::Call& call) {
    return contact || call.operation != "ReadRegister" || host.tap.Count("ReadRegister") < 2;
  };
  host.desktop.on_box = [&](int, std::u16string_view, std::u16string_view prompt) {
    EXPECT_EQ(prompt, u"M00   D0000");
    contact = true;
    return 4;
  };
  EXPECT_EQ(host.Run(kBlank), 0);
  EXPECT_THAT(host.log(), StartsWith(">>M1E   D5106\n>><op4>"));
}

TEST(IspFam1Range, PartialBlocksAndOddEndsAreHandedOverToTheLastByte) {
  TestHost host("isp51-8k");
  const auto image = RandomBytes(8192, 5);
  host.SetImage(image);
  ASSERT_EQ(host.Run({kErase, kProgram}), 0);
  host.vars.quorinwltbigendbuf[1] = 0x210;
  host.SetImage(std::vector<std::uint8_t>(8192, 0x00));
  host.tap.calls.clear();
  ASSERT_EQ(host.Run(kRead), 0);
  EXPECT_EQ(host.tap.Count("BlockTransfer"), 0x211U);
  EXPECT_EQ(host.vars.quorinibuffer[0x210], image[0x210]);
  EXPECT_EQ(host.vars.quorinibuffer[0x211], 0);

  host.vars.quorinwltbigendbuf[1] = -1;
  host.tap.calls.clear();
  EXPECT_EQ(host.Run(kRead), 0);
  EXPECT_EQ(host.tap.Count("usbbulkread"), 0U);

  host.vars.quorintlength[0] = 8192 + 512;  // pages beyond the data buffer
  EXPECT_EQ(host.Run(kProgram), 1);
  EXPECT_THAT(host.log(), EndsWith(">>Index out of range\n"));
  EXPECT_EQ(host.tap.calls.back().operation, "EndRun");
}

}  // namespace
}  // namespace fliglaf
