// The parallel engine end to end, on the chip that it programs page by page.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "parallel/mpu4prg.h"
#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::Narrow;
using test::RandomBytes;
using test::Sized;
using test::Tap;
using test::TestHost;
using testing::EndsWith;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRead = 2, kVerify = 3, kBlankCheck = 4, kCompare = 5, kProgram = 6;
constexpr std::uint8_t kConfig = 8, kErase = 9, kEraseInAnyMode = 11;
constexpr std::int32_t kSize = 1024;

class ParallelEngine : public testing::Test {
 protected:
  ParallelEngine() {
    host.UseParallelPort();
    host.SetImage(image);
  }

  TestHost host{Sized("isp51-4k", kSize)};
  Bytes image = RandomBytes(kSize, 61);
};

TEST_F(ParallelEngine, RandomImageSurvives) {
  host.vars.quorinchipidtestmode[0] = -1;
  host.vars.quorincompid[0] = 0x1E;
  host.vars.quorintypeid[0] = 0x51;
  host.vars.quorinwlverifyvcc[0] = 2;
  ASSERT_EQ(host.Run({kErase, kBlankCheck, kProgram, kVerify}), 0) << host.log();
  EXPECT_EQ(host.flash(), image);
  EXPECT_THAT(host.log(), HasSubstr(">>M1E   D5106\n>><op9>\n>><Blank Check>\n>>op9 ok\n"));
  EXPECT_THAT(host.log(), HasSubstr(">><Verify(VCC:5.5V) >\n>><Verify(VCC:4.5V) >\n>>op6 ok\n"));

  host.SetImage(Bytes(kSize));
  ASSERT_EQ(host.Run(kRead), 0) << host.log();
  EXPECT_EQ(host.image(), image);
  EXPECT_EQ(host.Run(kEraseInAnyMode), 0);
}

TEST_F(ParallelEngine, FirstFailingByteEndsThePassWithItsNote) {
  ASSERT_EQ(host.Run(kProgram), 0) << host.log();
  host.cells("flash")[0x102] = 0x5A;
  host.vars.quorinibuffer[0x102] = 0xA5;
  host.tap.calls.clear();
  EXPECT_EQ(host.Run(kVerify), 1);
  EXPECT_THAT(host.log(), HasSubstr(">>Device Address:00000102H  Device Data:5AH  "
                                    "Buffer Address:00000102H  Buffer Data:A5H\n>>op3 failed"));
  EXPECT_EQ(host.tap.Count("SignalFail"), 1U);

  EXPECT_EQ(host.Run(kBlankCheck), 1);
  host.vars.quorinbuftype[0] = 1;
  std::ranges::fill(host.cells("flash"), std::uint8_t{0});
  EXPECT_EQ(host.Run(kBlankCheck), 0);
  host.cells("flash")[0] = 0xFF;
  EXPECT_EQ(host.Run(kBlankCheck), 1);
  EXPECT_THAT(host.log(), HasSubstr("Device Address:00000000H  Device Data:FFH\n"));
}

TEST_F(ParallelEngine, CompareListsEveryDifferenceAndSucceeds) {
  EXPECT_EQ(host.Run(kCompare), 0);
  std::size_t equal = 0;
  for (const std::uint8_t byte : image) equal += byte == 0xFF ? 1 : 0;
  EXPECT_EQ(std::ranges::count(host.log(), '\n'),
            static_cast<std::ptrdiff_t>(2 + kSize - equal + 2));
  EXPECT_EQ(host.vars.quorinMainRtstr[1], u"");

  int turns = 0;
  host.desktop.on_turn = [&] {
    if (++turns == 5) host.vars.quorinprgresult[0] = 2;
    return false;
  };
  EXPECT_EQ(host.Run(kCompare), 2);
  EXPECT_THAT(host.log(), HasSubstr("stopped\n"));
}

TEST_F(ParallelEngine, StopBetweenPagesIsToldByWhereWritingEnded) {
  int turns = 0;
  host.desktop.on_turn = [&] {
    if (++turns == 3) host.vars.quorinprgresult[0] = 2;  // the start, page 0, page 1
    return false;
  };
  std::vector<Tap::Call> ends;
  EXPECT_EQ(host.Run(kProgram), 1) << "the verify fails at the first byte that was not written";
  EXPECT_TRUE(std::equal(image.begin(), image.begin() + 512, host.flash().begin()));
  EXPECT_EQ(host.flash()[512], 0xFF);
  EXPECT_EQ(host.tap.Count("EndProgramming"), 1U);
}

TEST_F(ParallelEngine, RangeGivesPagesAndBufferOffset) {
  host.vars.quorinwltbigendbuf[0] = 0x100;
  host.vars.quorinwltbigendbuf[1] = 0x300;
  host.vars.quorinwltbigendbuf[2] = 0x80;
  ASSERT_EQ(host.Run(kProgram), 0) << host.log();
  EXPECT_TRUE(
      std::equal(image.begin() + 0x80, image.begin() + 0x280, host.flash().begin() + 0x100));
  EXPECT_EQ(host.flash()[0xFF], 0xFF);
  EXPECT_EQ(host.flash()[0x300], 0xFF);
  host.vars.quorinwltbigendbuf[1] = 0x1FF;
  host.tap.calls.clear();
  EXPECT_EQ(host.Run(kVerify), 0) << "an empty range";
  EXPECT_EQ(host.tap.Count("ReadRegister"), 1U) << "of the programming enable";
  host.vars.quorinwltbigendbuf[2] = -0x101;
  host.vars.quorinwltbigendbuf[1] = 0x300;
  EXPECT_EQ(host.Run(kVerify), 1);
  EXPECT_THAT(host.log(), EndsWith(">>Index out of range\n"));
}

TEST_F(ParallelEngine, OtherModesTouchNoDevice) {
  host.vars.quorinprgmode[0] = 5;
  for (const std::uint8_t code : {kRead, kCompare, kProgram, kConfig, kErase}) {
    host.tap.calls.clear();
    EXPECT_EQ(host.Run(code), 0);
    EXPECT_EQ(host.tap.Count("WriteRegister") + host.tap.Count("WriteLatch"), 0U);
    EXPECT_EQ(host.tap.Count("ResetInterface"), 1U);
  }
  EXPECT_THAT(host.log(), HasSubstr(">><op9>\n>>op9 ok\n"));
  host.vars.quorinchipidtestmode[0] = -1;
  host.vars.quorintypeid[0] = 0x51;
  EXPECT_EQ(host.Run(kRead), 0) << "no answer, and no maker that is expected";
  host.vars.quorincompid[0] = 0x1E;
  std::u16string question;
  host.desktop.on_box = [&](int, std::u16string_view, std::u16string_view prompt) {
    question = prompt;
    return platform::box_answer::kAbort;
  };
  host.tap.calls.clear();
  host.Run(kRead);
  EXPECT_EQ(Narrow(question), "M   D");
  EXPECT_EQ(host.tap.Count("EndRun"), 2U);
}

TEST_F(ParallelEngine, AnotherSignatureIsReadAgainOrIgnored) {
  host.vars.quorinchipidtestmode[0] = -1;
  host.vars.quorintypeid[0] = 0x52;
  std::vector<std::string> prompts;
  host.desktop.on_box = [&](int, std::u16string_view title, std::u16string_view prompt) {
    prompts.push_back(Narrow(title) + Narrow(prompt));
    return prompts.size() < 3 ? platform::box_answer::kRetry : platform::box_answer::kIgnore;
  };
  EXPECT_EQ(host.Run(kBlankCheck), 0) << host.log();
  EXPECT_EQ(prompts, std::vector<std::string>(3, "Warning! Device Code Error!M1E   D5106"));
}

TEST(ParallelWindow, StopsFromItsButtonAndIsLowerAfterACompare) {
  TestHost host(Sized("isp51-4k", kSize));
  host.UseParallelPort();
  auto vars = std::make_shared<SharedVariables>();
  vars->OpenMainGroup(7, [] {});
  vars->OpenDataBuffers(vars->DataBufferLength(), [] {});
  mpu4prg window(vars, host.tap, host.desktop);
  window.Form_Load();
  EXPECT_EQ(window.form().caption, u"Information");
  const int height = window.form().size.height;
  EXPECT_EQ(window.dataout(0x5A, 7, 0), 0);
  EXPECT_EQ(host.vars.quorinibuffer[7], 0x5A);
  EXPECT_EQ(window.dataout(0x5B, 7, 1), 1);
  EXPECT_EQ(window.dataout(0x5B, 7, -1), 0);

  host.vars.quorinprgresult[1] = kCompare;
  window.Timer1_Timer();
  EXPECT_EQ(host.tap.calls.back().operation, "EndRun");
  EXPECT_EQ(window.form().size.height, height - 300);
  EXPECT_FALSE(window.pexit.visible);
  window.prgnote1(0);
  EXPECT_EQ(window.form().caption, u"<Verify>");
  window.pexit.Click();
  EXPECT_EQ(host.vars.quorinprgresult[0], 2);
}

TEST(ParallelStart, FailuresEndTheRunBeforeTheSocketIsUsed) {
  const struct {
    Op refused;
    std::size_t reports;
  } cases[] = {{Op::kOpenProgrammer, 1}, {Op::kSetVcc, 1}, {Op::kSetFigMode, 0}};
  for (const auto& [refused, reports] : cases) {
    TestHost host(Sized("isp51-4k", kSize),
                  {.programmer = {.scheduled = {{simulator::Fault::kRefusal, refused}}}});
    host.UseParallelPort();
    host.Run(kProgram);
    EXPECT_EQ(host.log(), "");
    EXPECT_EQ(host.tap.Count("ReportStartupFailure"), reports);
    EXPECT_EQ(host.tap.Count("SetVccPin"), 0U);
    EXPECT_EQ(host.tap.calls.back().operation, "EndRun");
  }
}

}  // namespace
}  // namespace fliglaf
