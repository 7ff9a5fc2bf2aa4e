#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_host.h"
#include "usb/usbmpu4prg.h"

namespace fliglaf {
namespace {

using simulator::Fault;
using test::Narrow;
using test::TestHost;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int kNoFamily = 99;

TEST(Driver, EveryComponentFailureEndsTheRunWithItsLine) {
  for (const Op op :
       {Op::kOpenProgrammer, Op::kSetFigMode, Op::kSetVcc, Op::kWriteLatch, Op::kUsbComWrite,
        Op::kFlushQueue, Op::kBlockTransfer, Op::kReadRegister, Op::kSignalPass, Op::kEndRun}) {
    const std::string operation(Row(op).name);
    TestHost host("isp51-4k", {.programmer = {.scheduled = {{Fault::kFailedCall, op, 1}}}});
    EXPECT_EQ(host.Run(4), 1) << operation;
    EXPECT_THAT(host.log(), EndsWith(">>IoHelper." + operation + " failed: 0x80004005\n"));
    EXPECT_EQ(host.tap.calls.back().operation, "EndRun") << operation;
    EXPECT_EQ(host.tap.Count("SignalFail"), 0U) << operation;
    EXPECT_EQ(host.Run(4), 0) << "the next request works after " << operation;
  }
}

TEST(Driver, AnyOtherExceptionEndsTheRunToo) {
  TestHost host;
  host.desktop.on_turn = []() -> bool { throw std::runtime_error("the host's window failed"); };
  EXPECT_EQ(host.Run(4), 1);
  EXPECT_THAT(host.log(), EndsWith(">>the host's window failed\n"));
  EXPECT_EQ(host.tap.calls.back().operation, "EndRun");
  host.desktop.on_turn = nullptr;
  EXPECT_EQ(host.Run(4), 0);
}

TEST(Driver, TheProgrammingVoltageIsSetOnModelsThatWantIt) {
  TestHost host;
  host.vars.quorinbvpp[0] = 1250;
  for (std::int16_t model = 4; model <= 7; ++model) {
    host.vars.quorinmodeltype[0] = model;
    host.tap.calls.clear();
    EXPECT_EQ(host.Run(4), 0);
    EXPECT_EQ(host.tap.calls[1].operation, model == 5 || model == 6 ? "SetVpp" : "SetFigMode");
  }
}

TEST(Driver, StartThatFailsEndsWithoutEndRun) {
  TestHost host("isp51-4k",
                {.programmer = {.scheduled = {{Fault::kRefusal, Op::kOpenProgrammer}}}});
  host.vars.quorinprgresult[0] = 9;
  host.Run(6);
  EXPECT_EQ(host.vars.quorinprgresult[0], 9);
  EXPECT_EQ(host.log(), "");
  EXPECT_EQ(host.tap.calls.back().operation, "ReportStartupFailure");
  EXPECT_EQ(host.vars.quorinubuflg[0], 16368);

  TestHost no_adapter("isp51-4k",
                      {.programmer = {.scheduled = {{Fault::kRefusal, Op::kSetFigMode}}}});
  no_adapter.Run(6);
  EXPECT_EQ(no_adapter.tap.calls.back().operation, "SetFigMode");
}

TEST(Driver, AutomaticSequenceAsksAfterAFailedBlankCheckAndEndsAtAnyOtherFailure) {
  for (const int answer : {1, 2}) {
    TestHost host;
    host.SetImage(std::vector<std::uint8_t>(4096, 0x00));
    ASSERT_EQ(host.Run({11, 6}), 0);
    int boxes = 0;
    host.desktop.on_box = [&](int style, std::u16string_view title, std::u16string_view prompt) {
      ++boxes;
      EXPECT_EQ(style, 33);
      EXPECT_EQ(Narrow(title) + Narrow(prompt), "titleprompt");
      return answer;
    };
    EXPECT_EQ(host.Run({4, 3, 11}), answer == 1 ? 0 : 1);
    EXPECT_EQ(boxes, 1);
  }
  TestHost host;
  host.SetImage(std::vector<std::uint8_t>(4096, 0x00));
  EXPECT_EQ(host.Run({3, 4}), 1);
  EXPECT_THAT(host.log(), testing::Not(HasSubstr("<op4>")));
}

TEST(Driver, RequestsWithoutARoutineGiveStartAndResultLine) {
  TestHost host;
  host.vars.quorinprgmode[0] = kNoFamily;
  EXPECT_EQ(host.Run(std::initializer_list<std::uint8_t>{}), 0);
  EXPECT_EQ(host.log(), ">><op6>\n>>op6 ok\n>> 0.00Sec\n");
  host.vars.quorinMainRtstr.Set(0, std::u16string(500, u'x'));
  host.Run(7);
  EXPECT_THAT(host.log(), StartsWith("xxx")) << "500 characters stay";
  host.Run(7);
  EXPECT_THAT(host.log(), StartsWith(">><op7>"));

  host.vars.quorinprgresult[0] = 3;
  EXPECT_EQ(host.Run(1), 3) << "a request for nothing leaves the result";
  EXPECT_EQ(host.tap.Count("SignalFail"), 1U);
  host.tap.calls.clear();
  EXPECT_EQ(host.Run(20), 1) << "an operation without a name";
  EXPECT_THAT(host.log(), EndsWith("Sec\n>>Index out of range\n"));
}

TEST(Driver, ElapsedTimeGoesOverMidnight) {
  TestHost host;
  platform::PortableDesktop desktop(host.bench, 86'399.9);
  Library library(host.tap, desktop);
  clsMPU object(library);
  std::int16_t instance = 7;
  std::int16_t usb = -1;
  object.bufcommpu4(instance);
  host.vars.quorinprgresult[1] = 11;
  object.runMpu4Prg(usb);
  EXPECT_THAT(host.log(), testing::HasSubstr("\n>> 1.9"))
      << "an erase of 1.68 s and its blank check";
}

TEST(Driver, VerifyNotesNameTheSupply) {
  struct Case {
    int supply, margin, pass;
    const char* text;
  };
  for (const Case& c :
       {Case{500, 2, 1, "(VCC:5.5V) "}, Case{500, 1, 2, "(VCC:4.75V) "},
        Case{500, 20, 1, "(VCC:10V) "}, Case{50, 1, 1, "(VCC:0.52V) "},
        Case{500, 20, 2, "(VCC:0V) "}, Case{330, -1, 1, "(VCC:3.14V) "}, Case{500, 2, 0, ""}}) {
    TestHost host;
    auto vars = std::make_shared<SharedVariables>();
    vars->OpenMainGroup(7, [] {});
    vars->quorinbvcc[0] = static_cast<std::int16_t>(c.supply);
    vars->quorinwlverifyvcc[0] = c.margin;
    usbmpu4prg window(vars, host.tap, host.desktop);
    window.prgnote1(static_cast<std::uint8_t>(c.pass));
    EXPECT_EQ(host.log(), std::string(">><Verify") + c.text + ">\n");
    EXPECT_EQ(Narrow(window.form().caption), std::string("<Verify") + c.text + ">");
  }
}

TEST(Window, LoadsItsCaptionsAndStopsFromItsButton) {
  TestHost host;
  auto vars = std::make_shared<SharedVariables>();
  vars->OpenMainGroup(7, [] {});
  usbmpu4prg window(vars, host.tap, host.desktop);
  window.Form_Load();
  EXPECT_EQ(window.form().caption, u"Information");
  EXPECT_EQ(window.pexit.caption, u"Stop");
  window.pexit.Click();
  EXPECT_EQ(host.vars.quorinprgresult[0], 2);
  host.vars.quorinprgresult[1] = 1;
  window.Timer1_Timer();
  EXPECT_EQ(host.tap.calls.back().operation, "EndRun") << "its handler runs the request";
}

}  // namespace
}  // namespace fliglaf
