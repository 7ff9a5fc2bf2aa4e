#include "replay/replay.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "replay/player.h"

namespace fliglaf::record {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace fs = std::filesystem;

const fs::path kGiven = FLIGLAF_GIVEN_RECORDS;

std::string ReadFile(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

/// A run of family 1 that checks the signature and asks about it, then runs no operation.
constexpr std::string_view kRun = R"(fliglaf run record 1
[before]
quorinprgresult(0) = 0 1
quorinbvcc(0) = 500
quorinchipidtestmode(0) = -1
quorinprgmode(0) = 1 7
quorincompid(0) = 0x1E
quorinMainRtstr(0) = "old\n>>start\n"
quorinbuflength(0) = 16
quorinibuffer(3) = 5 2*9
[call]
runMpu4Prg(-1)
[traffic]
OpenProgrammer()
SetFigMode(0)
SetVcc(5000)
SetGndPin(0, 1)
DelayMs(500)
SetOutputs(0)
SetVccPin(0, 1)
usbcomwrite(30 01 00 00 00 00 00 00 00 00 00 00 00 00 00)
# the lines of the target
WriteLatch(0x00, 3)
WriteLatch(0x08, 2)
WriteLatch(0x02, 1)
WriteLatch(0x80, 0)
DelayMs(100)
WriteLatch(0x00, 2)
WriteLatch(0x08, 2)
DelayMs(100)
WriteRegister(0xAC, 0x8E)
WriteRegister(0x53, 0x8E)
WriteRegister(0xFF, 0x8E)
WriteRegister(0x01, 0x8F)
ReadRegister(0x21) = 0x69
2 * DelayMs(100)
WriteRegister(0x28, 0x8E)
2 * WriteRegister(0x00, 0x8E)
WriteRegister(0x01, 0x8F)
ReadRegister(0x21) = 0x1F
WriteRegister(0x28, 0x8E)
WriteRegister(0x01, 0x8E)
WriteRegister(0x00, 0x8E)
WriteRegister(0x01, 0x8F)
ReadRegister(0x21) = 0x02
WriteRegister(0x28, 0x8E)
WriteRegister(0x02, 0x8E)
WriteRegister(0x00, 0x8E)
WriteRegister(0x01, 0x8F)
ReadRegister(0x21) = 0x03
MsgBox(50, "Warning! Device Code Error!", "1F   0203") = 5
set quorinibuffer(15) = 77
SignalPass(0)
EndRun()
[after]
quorinMainRtstr(0) = "old\n>>start\n>> 0.00Sec\n"
quorinibuffer(3) = 5 2*9 9*0 77
)";

/// `text` with the first `what` replaced.
std::string Replaced(std::string_view text, std::string_view what, std::string_view by) {
  std::string changed(text);
  const std::size_t at = changed.find(what);
  EXPECT_NE(at, std::string::npos) << what;
  return at == std::string::npos ? changed : changed.replace(at, what.size(), by);
}

/// The number of the line that contains `what`.
long LineOf(std::string_view text, std::string_view what) {
  return std::ranges::count(text.substr(0, text.find(what)), '\n') + 1;
}

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

Outcome ReplayText(std::string_view text, const ReplayOptions& options = {}) {
  const fs::path file =
      fs::path(testing::TempDir()) /
      (std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + ".run");
  std::ofstream(file, std::ios::binary) << text;
  std::ostringstream out;
  std::ostringstream err;
  const int status = Replay({{file}}, options, out, err);
  const auto without_folder = [&file](std::string s) {
    for (std::size_t at = 0; (at = s.find(file.string())) != std::string::npos;) {
      s.replace(at, file.string().size(), "f");
    }
    return s;
  };
  fs::remove(file);
  return {status, without_folder(out.str()), without_folder(err.str())};
}

TEST(Replay, AgreesWithLinesAsAnEditorLeavesThem) {
  EXPECT_EQ(ReplayText(kRun).out, "f: ok, 41 calls\n");

  std::string dos;
  for (const char c : kRun) dos += c == '\n' ? std::string("\r\n") : std::string(1, c);
  EXPECT_EQ(ReplayText(dos).out, "f: ok, 41 calls\n");

  const std::string long_comment = "\n#" + std::string(200'000, 'x') + "\n\n[call]";
  EXPECT_EQ(ReplayText(Replaced(kRun, "\n[call]", long_comment)).out, "f: ok, 41 calls\n");

  EXPECT_EQ(ReplayText(Replaced(kRun, "DelayMs(500)", "1 * DelayMs( 0x1F4 ) = 0")).out,
            "f: ok, 41 calls\n");
}

TEST(Replay, FirstDifferenceIsReportedAtItsLine) {
  struct Change {
    std::string_view what;
    std::string_view by;
    std::string_view line_of;
    std::string_view report;
  };
  for (
      const Change& change : {
          Change{"SetVcc(5000)", "SetVcc(5500)", "SetVcc",
                 "expected SetVcc(5500), got SetVcc(5000)"},
          Change{"SetGndPin(0, 1)", "SetVccPin(0, 1)", "SetVccPin",
                 "expected SetVccPin(0, 1), got SetGndPin(0, 1)"},
          Change{"30 01 00 00", "30 01 00 0A", "usbcomwrite",
                 "expected usbcomwrite(30 01 00 0A 00 00 00 00 00 00 00 00 00 00 00), got "
                 "usbcomwrite(30 01 00 00 00 00 00 00 00 00 00 00 00 00 00)"},
          Change{"= 0x69", "= 0x68", "2 * DelayMs", "expected DelayMs(100), got WriteLatch"},
          Change{"2 * DelayMs", "3 * DelayMs", "3 * DelayMs",
                 "expected DelayMs(100), got WriteRegister(0x28, 0x8E)"},
          Change{"DelayMs(500)\n", "", "SetOutputs", "expected SetOutputs(0), got DelayMs(500)"},
          Change{"SetOutputs(0)\n", "SetOutputs(0)\n1 * SetOutputs(0)\n", "1 * SetOutputs",
                 "expected SetOutputs(0), got SetVccPin(0, 1)"},
          Change{
              "= 0x03\n", "= 0x04\n", "MsgBox",
              R"(expected MsgBox(50, "Warning! Device Code )"
              R"(Error!", "1F   0203"), got MsgBox(50, "Warning! Device Code Error!", "1F   0204"))"},
          Change{"EndRun()\n", "", "[after]", "expected the end of the run, got EndRun()"},
          Change{"EndRun()\n", "EndRun()\n1 * EndRun()\n", "1 * EndRun",
                 "expected EndRun(), got the end of the run"},
          Change{"SetFigMode(0)\n", "SetFigMode(0) ! 0x80004005\n", "SetVcc",
                 "expected SetVcc(5000), got EndRun()"},
          Change{"0.00Sec", "0.01Sec", "0.01Sec",
                 R"(expected "old\n>>start\n>> 0.01Sec\n", got )"
                 R"("old\n>>start\n>> 0.00Sec\n")"},
          Change{"9*0 77", "9*0 78", "9*0 78", "expected 78, got 77"},
      }) {
    const std::string text = Replaced(kRun, change.what, change.by);
    const Outcome outcome = ReplayText(text);
    EXPECT_EQ(outcome.status, kSomeDiffer);
    EXPECT_THAT(outcome.out, StartsWith("f:" + std::to_string(LineOf(text, change.line_of)) + ": " +
                                        std::string(change.report)));
    EXPECT_EQ(outcome.err, "");
  }
}

TEST(Replay, DamageIsNamedWithItsLine) {
  struct Damage {
    std::string_view what;
    std::string_view by;
    std::string_view error;
  };
  for (const Damage& damage : {
           Damage{"record 1", "record 2", "f:1: \"fliglaf run record 2\" is not the first line"},
           Damage{"[call]", "[calls]", "f:11: unknown section \"[calls]\"; the sections are"},
           Damage{"[call]", "[after]", "f:11: [after] cannot stand here"},
           Damage{"runMpu4Prg(-1)\n", "", "f:12: [call] must hold one call"},
           Damage{"runMpu4Prg(-1)", "runMpu5Prg(-1)", "f:12: the host object has no method"},
           Damage{"runMpu4Prg(-1)", "mpu4warn(256)", "f:12: argument 256; must be 0 to 255"},
           Damage{"quorinbvcc(", "quorinbvdd(", "f:4: no shared variable is called \"quorinbvdd\""},
           Damage{"quorinbvcc(0)", "quorinbvcc(4)", "f:4: there is no quorinbvcc(4)"},
           Damage{"quorinibuffer(3) = 5", "quorinibuffer(3) = 213*5",
                  "f:10: there is no "
                  "quorinibuffer(217)"},
           Damage{"= 500", "= 40000",
                  "f:4: an element of quorinbvcc cannot be 40000; must be -32768"},
           Damage{"= 500", "= 5OO", "f:4: \"5OO\" is not an integer"},
           Damage{"= 0 1", "= 0 256",
                  "f:3: an element of quorinprgresult cannot be 256; must be 0 to 255"},
           Damage{"= 500", "= \"x\"", "f:4: \"\"x\"\" is not an integer"},
           Damage{">>start\\n\"", ">>start\\n", "f:8: the text has no closing quote"},
           Damage{"old\\n", "old\\q", "f:8: in a text, a backslash"},
           Damage{"old", "\xC3old", "f:8: byte 0xC3 is not UTF-8"},
           Damage{"= 16", "= -300", "f:9: quorinbuflength(0) = -300; a data buffer"},
           Damage{"= 16", "= 16777217",
                  "f:9: quorinbuflength(0) = 16777217; must be at most 16777216"},
           Damage{"SetFigMode(0)", "SetFugMode(0)", "f:15: unknown operation \"SetFugMode\""},
           Damage{"SetFigMode(0)", "SetFigMode(256)",
                  "f:15: argument 1 of SetFigMode: 256; must be 0 to 255"},
           Damage{"SetFigMode(0)", "SetFigMode(0, 1)", "f:15: SetFigMode takes 1 argument, not 2"},
           Damage{"SetFigMode(0)", "SetFigMode()", "f:15: SetFigMode takes 1 argument, not 0"},
           Damage{"SetFigMode(0)", "SetFigMode(0) ! 5", "f:15: HRESULT 5; must be"},
           Damage{"SetFigMode(0)", "0 * SetFigMode(0)", "f:15: number of calls 0"},
           Damage{"SetFigMode(0)", "SetFigMode(0) x", "f:15: \"x\" does not belong here"},
           Damage{"30 01", "30 0G", "f:21: expected ')' before \"0G"},
           Damage{"set quorinibuffer(15)", "set quorinibuffer(216)",
                  "f:52: there is no quorinibuffer(216)"},
           Damage{"SignalPass(0)", "event Timer2\nset quorinibuffer(0) = 1",
                  "f:54: \"set\" must stand directly below"},
           Damage{"SignalPass(0)", "event Timer1", "f:53: no shared variable is called \"Timer1\""},
           Damage{"= 0x02", "= 0x102030405", "f:45: result"},
       }) {
    const Outcome outcome = ReplayText(Replaced(kRun, damage.what, damage.by));
    EXPECT_EQ(outcome.status, kUnreadable) << damage.by << outcome.out;
    EXPECT_THAT(outcome.err, HasSubstr(damage.error));
    EXPECT_EQ(outcome.out, "");
  }
  EXPECT_THAT(ReplayText("").err, HasSubstr("f:1: "));
}

TEST(Replay, AFileThatEndsEarlyIsNeverTakenForAWholeOne) {
  for (std::size_t length = 0; length < kRun.find("[after]\n") + 8; length += 7) {
    const Outcome outcome = ReplayText(kRun.substr(0, length));
    EXPECT_EQ(outcome.status, kUnreadable) << length << outcome.out;
    EXPECT_THAT(outcome.err, StartsWith("f:"));
  }
  EXPECT_THAT(ReplayText(kRun.substr(0, kRun.size() - 2)).err,
              HasSubstr("the file ends in the middle of this line"));
}

TEST(Replay, OneUnreadableFileDoesNotKeepTheOthersFromBeingPlayed) {
  std::ostringstream out;
  std::ostringstream err;
  const std::vector<fs::path> files{"no-such.run", kGiven / "host-map-30.run"};
  EXPECT_EQ(Replay(files, {}, out, err), kUnreadable);
  EXPECT_EQ(err.str(), "no-such.run: cannot be opened for reading\n");
  EXPECT_EQ(out.str(), (kGiven / "host-map-30.run").string() + ": ok, 1 calls\n");
}

TEST(Replay, ExplainTellsTheCallsBeforeAndThePlace) {
  const std::string out =
      ReplayText(Replaced(kRun, "SignalPass", "SignalFail"), {.explain = true}).out;
  EXPECT_THAT(out, HasSubstr("got SignalPass(0)\n    42: WriteRegister(0x01, 0x8E)\n"));
  EXPECT_THAT(out,
              HasSubstr("\"1F   0203\")\n  last line of the log \">> 0.00Sec\", progress 7 %\n"));
  EXPECT_EQ(std::ranges::count(out, '\n'), 12);
  EXPECT_THAT(ReplayText(Replaced(kRun, "5 2*9 9*0", "5 2*9 8*0 1"), {.explain = true}).out,
              HasSubstr("  in quorinibuffer(14)\n"));
}

TEST(Replay, AReportIsShortAndSafeForATerminal) {
  // ESC, a C1 control and an override of the direction; what is written from left to right stays.
  const std::string hostile = "\x1B[2J\xC2\x9B\xE2\x80\xAE\u00e9";
  const std::string shown = "\uFFFD[2J\uFFFD\uFFFD\u00e9";
  EXPECT_THAT(ReplayText(Replaced(kRun, "Warning!", hostile), {.explain = true}).out,
              HasSubstr("expected MsgBox(50, \"" + shown + " Device"));
  EXPECT_THAT(ReplayText(Replaced(kRun, "EndRun()", "Mad" + hostile)).err,
              HasSubstr("unknown operation \"Mad\""));
  std::ostringstream err;
  EXPECT_EQ(Replay({{fs::path(hostile)}}, {}, err, err), kUnreadable);
  EXPECT_EQ(err.str(), shown + ": cannot be opened for reading\n");

  // Of long values the report shows where they differ.
  const std::string log = std::string(500'000, 'x') + "\\n";
  const std::string out = ReplayText(Replaced(Replaced(kRun, "= \"old\\n", "= \"" + log),
                                              "old\\n>>start\\n>> 0.00", log + ">>start\\n>> 0.01"),
                                     {.explain = true})
                              .out;
  EXPECT_LT(out.size(), 3'000U);
  EXPECT_THAT(out, HasSubstr("x\\n>>start\\n>> 0.01Sec\\n\", got ...xxx"));
}

TEST(Replay, AFileWithoutEndIsRefused) {
  std::ostringstream err;
  EXPECT_EQ(Replay({{"/dev/zero"}}, {}, err, err), kUnreadable);
  EXPECT_EQ(err.str(), "/dev/zero:1: the line is longer than 16 MiB\n");
}

/// A sample in which the bulk read behind line `find` is answered by `answer` for good.
std::string WithTransfer(std::string_view answer) {
  std::string text = ReadFile(kGiven / "serial-f1_read_two_pages.run");
  const std::size_t from = text.find("= 2 data");
  EXPECT_NE(from, std::string::npos);
  return text.replace(from, text.find('\n', from) - from, answer);
}

TEST(Replay, AWaitThatNothingWillEndIsReported) {
  for (const std::string_view answer : {"= 0", "= 2 data 01 02"}) {
    const std::string text = WithTransfer(answer);
    const Outcome outcome = ReplayText(text);
    EXPECT_EQ(outcome.status, kSomeDiffer);
    EXPECT_THAT(outcome.out, HasSubstr("got no call: the run waits in the message loop"));
  }
}

TEST(Replay, EventsHappenOneATurn) {
  // The stop request comes in the second turn, in which the end mark would have been seen: the
  // captured block is given up.
  const std::string text = WithTransfer(
      "= 2 data 01 end AA\nevent quorinprgresult(0) = 0\nevent quorinprgresult(0) = 2");
  EXPECT_THAT(ReplayText(text).out, HasSubstr("got FlushQueue()"));
  // One turn later it is not seen before the next message-loop turn, behind the block.
  EXPECT_THAT(ReplayText(Replaced(text, "event", "event quorinprgresult(0) = 0\nevent")).out,
              HasSubstr("got BlockTransfer(0x01, 0, 0)"));
}

TEST(Replay, ForeignVariablesAreNotTouched) {
  SharedVariables host;
  host.OpenMainGroup(0, [] {});
  host.quorinbvcc[0] = 321;
  EXPECT_THAT(ReplayText(kRun).err, HasSubstr("instance 0 are in use"));
  EXPECT_EQ(host.quorinbvcc[0], 321);
}

}  // namespace
}  // namespace fliglaf::record
