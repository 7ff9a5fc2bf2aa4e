// Configuration bytes, fuses and simulated chips in files, as a user of the program meets them.
#include <map>

#include "tests/cli/program_fixture.h"

namespace fliglaf {
namespace {

using test::ReadText;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using Fuses = test::ProgramTest;

TEST_F(Fuses, BytesAreWrittenAndReadBack) {
  EXPECT_EQ(Run("config isp-page-16k LOW=0xE2 high=DF low=e2 --chip c --record r"), 0) << err_;
  EXPECT_THAT(out_, HasSubstr("configuration written: low=E2 calibration="));
  EXPECT_EQ(Run("replay r"), 0) << out_;
  EXPECT_EQ(Run("config isp-page-16k high=5F --chip c"), 2);
  EXPECT_THAT(err_, HasSubstr("high bit 7 = 0 (RSTDISBL) turns the reset line off"));
  for (const char* const answers : {"maybe\n\n", "x\nN\n", "?\n\x04"}) {
    EXPECT_EQ(RunAtTerminal("config isp-page-16k high=5F --chip c", answers), 2);
    EXPECT_THAT(out_, ContainsRegex("Go on\\? \\(y/N\\) [^\n]+\n.*Go on\\? \\(y/N\\) "));
  }
  EXPECT_EQ(Run("config isp-page-16k --chip c"), 0);
  EXPECT_THAT(out_, HasSubstr("high=DF lock=FF\n")) << "nothing was written";
  EXPECT_EQ(RunAtTerminal("config isp-page-16k high=9F --chip c", "?\nY\n"), 0) << err_;
  EXPECT_EQ(Run("config isp-page-16k high=9F lock=FE --chip c --yes"), 0) << err_;
  EXPECT_EQ(Run("config isp-page-16k low=FF --chip c"), 1) << "locked against writing";
  EXPECT_THAT(err_, HasSubstr("differs from what was written: low is E2, not FF"));
  EXPECT_EQ(Run("config jtag-byte-16k high=D9"), 2);
  EXPECT_THAT(err_, HasSubstr("high=D9: bit 6 cannot be written here; must be 99\n"));
  EXPECT_EQ(Run("config isp-page-16k high=5F --chip off --yes"), 0) << err_;
  EXPECT_EQ(Run("config isp-page-16k --chip off"), 1);
  EXPECT_THAT(err_, HasSubstr("another signature was read"));
}

TEST_F(Fuses, AReadLockThatHidesTheOtherLockKeepsItFromBeingOverwritten) {
  ASSERT_EQ(Run("config jtag-flash-16k write-lock=FE read-lock=7F --chip c"), 0) << err_;
  EXPECT_THAT(out_, HasSubstr("write-lock=00 read-lock=00; the read lock hides the true values"));
  EXPECT_EQ(Run("config jtag-flash-16k read-lock=3F --chip c"), 2);
  EXPECT_EQ(Run("fuses set jtag-flash-16k write-lock.1=1 --chip c"), 2);
  EXPECT_THAT(err_, HasSubstr("both must be given: fliglaf config jtag-flash-16k write-lock=XX"));
  EXPECT_THAT(ReadText(folder_ / "c"), HasSubstr("area lock 2\n0000: FE 7F\n"));
  EXPECT_EQ(Run("config jtag-flash-16k write-lock=FE read-lock=FF --chip c"), 1);
}

TEST_F(Fuses, BitsAreShownAndSetByName) {
  ASSERT_EQ(Run("fuses set isp-page-16k ckdiv8=0x1 low.0=enable 'lock bit=Lock Bit1' --chip c"), 0)
      << err_;
  EXPECT_THAT(out_, ContainsRegex("written: low=E2 calibration=.. high=DF lock=FE\n$"));
  EXPECT_EQ(Run("fuses show isp-page-16k --chip c"), 0);
  EXPECT_THAT(out_, StartsWith("bit          name              value  meaning\n"
                               "low.0        CKSEL0            0      Enable\n"));
  EXPECT_THAT(out_, HasSubstr("\nhigh.5       SPIEN             0      Enable, shown only\n"));
  EXPECT_THAT(out_, HasSubstr("\nlock.1-0     Lock Bit          10     Lock Bit1\n"));
  EXPECT_EQ(Run("fuses set isp-page-16k CKSEL0=0 LOW.0=Enable lock.1-0=0x2 --chip c"), 0) << err_;
  EXPECT_THAT(out_, HasSubstr("nothing to change"));
  EXPECT_EQ(Run("fuses set isp-page-16k DWEN=0 --chip c"), 2);
  EXPECT_EQ(Run("fuses set isp-page-16k DWEN=0 --chip c --yes"), 0) << err_;
  EXPECT_THAT(out_, EndsWith("disables the programming interface\n"));

  EXPECT_EQ(Run("fuses set isp-frame-2k --chip f FUSE.1=1 fuse.2=0 fuse.3=1 'bit 1 lock bit 2=1'"),
            2);
  constexpr std::string_view kExample = "fliglaf fuses set isp-frame-2k ";
  ASSERT_THAT(err_, HasSubstr("missing: Bit 0 Lock Bit 1; with"));
  ASSERT_THAT(err_, HasSubstr(kExample));
  std::string bits = err_.substr(err_.find(kExample) + kExample.size());
  bits.pop_back();  // the end of the line
  EXPECT_EQ(Run("fuses set isp-frame-2k --chip f " + bits), 0) << err_;
  EXPECT_THAT(ReadText(folder_ / "f"), HasSubstr("area fuses 1\n0000: 0A\n"));
}

TEST_F(Fuses, AreShownAndSetInAnImage) {
  std::ofstream(folder_ / "i.hex") << ":0105FF005AA1\n:00000001FF\n";  // with gaps, but a lock byte
  EXPECT_EQ(Run("fuses set two-wire-2k lock=0x3f --image i.hex"), 0) << err_;
  EXPECT_EQ(Run("fuses show two-wire-2k --image i.hex --json"), 0);
  EXPECT_THAT(out_, HasSubstr("\"name\": \"Address \\\"5FF\\\" Value\",\n      \"value\": \"3F\""));
  ASSERT_EQ(Run("read jtag-flash-16k --image j.bin"), 0) << err_;
  EXPECT_EQ(Run("fuses set jtag-flash-16k write-lock.7=0 read-lock.7=locked --image j.bin"), 0);
  EXPECT_EQ(Run("fuses show jtag-flash-16k --image j.bin"), 0);
  EXPECT_THAT(out_, HasSubstr("write-lock.7  0x7000 - 0x7DFD  1      unlocked\n"));
  EXPECT_THAT(out_, HasSubstr("read-lock.7   0x7000 - 0x7DFD  0      locked\n"));
}

TEST_F(Fuses, WhatIsWrongIsSaidBeforeADeviceOrFileIsTouched) {
  std::ofstream(folder_ / "code.hex") << ":0100000000FF\n:00000001FF\n";
  const std::vector<Refusal> refusals{
      Refusal{"fuses set isp-page-16k", "name what to change"},
      Refusal{"fuses show isp-page-16k SPIEN=0", "\"fuses set\" does"},
      Refusal{"fuses set isp-page-16k SPIEN", "must be NAME=VALUE"},
      Refusal{"fuses set isp-page-16k CKSEL9=1", "did you mean CKSEL0"},
      Refusal{"fuses set isp-page-16k CKSEL0=2", "must be one of 0 (Enable), 1 (Disable)"},
      Refusal{"fuses set isp-page-16k CKSEL0=1 low.0=0", "low.0=0 contradicts CKSEL0=1"},
      Refusal{"fuses set isp-page-16k SPIEN=0", "shown only"},
      Refusal{"fuses set jtag-flash-16k '0x0000 - 0x0FFF=0'", "write-lock.0 or read-lock.0"},
      Refusal{"fuses set two-wire-2k lock=0x1FF", "hexadecimal digits"},
      Refusal{"fuses show isp51-4k", "no fuses or lock bytes"},
      Refusal{"fuses show isp-frame-2k", "cannot be read; fuses show --image"},
      Refusal{"fuses show two-wire-2k --image random.bin", "random.bin: its size is 8192; an im"},
      Refusal{"fuses show two-wire-2k --image code.hex", "nothing at address 0x05FF, the byte "},
      Refusal{"config isp-page-16k fuse=00", "unknown byte; isp-page-16k has low, high, lock"},
      Refusal{"config isp-page-16k low=0x", "hexadecimal digits"},
      Refusal{"config isp-page-16k low=E2 LOW=E3", "LOW=E3 contradicts low=E2"},
      Refusal{"config isp-page-16k calibration=00", "calibration cannot be written"},
      Refusal{"config isp-frame-2k FUSE=0E fuse=0E", "fliglaf config isp-frame-2k fuse=0E lock=XX"},
  };
  for (const auto& [arguments, message] : refusals) {
    ExpectRefused({{arguments + " --fault no-programmer", message}});
  }
}

TEST_F(Fuses, ABadChipFileIsRefusedInAShortLine) {
  const std::string other = "fliglaf chip 1\ndevice isp51-8k\n";
  const std::string head = "fliglaf chip 1\ndevice isp51-4k\n";
  const std::string lock = head + "area lock 1\n0000: ";
  const std::map<std::string, const char*> cases{
      {"", "c: empty; a chip file begins with \"fliglaf chip 1\""},
      {"\x1B[2J", "c:1: not a chip file"},
      {other, "c:2: the file holds isp51-8k"},
      {head + "area lock 1\n", "c:3: the file ends before"},
      {head + "area \u202Elock 1", "c:3: isp51-4k has no area \"\uFFFDlock\""},
      {lock + "00 00", "c:4: the row goes beyond the 1 byte of area \"lock\""},
      {lock + std::string(5 << 20, '\x1B'), "\uFFFD...\" is not a byte of two hex"}};
  for (const auto& [text, message] : cases) {
    std::ofstream(folder_ / "c") << text;
    EXPECT_EQ(Run("blank isp51-4k --chip c"), 2);
    EXPECT_THAT(err_, HasSubstr(message));
    EXPECT_LT(err_.size(), 250);
    EXPECT_EQ(ReadText(folder_ / "c"), text);
  }
}

}  // namespace
}  // namespace fliglaf
