// The program as a user runs it.
#include <algorithm>
#include <csignal>

#include "tests/cli/program_fixture.h"

namespace fliglaf {
namespace {

namespace fs = std::filesystem;
using test::ReadText;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using Program = test::ProgramTest;

TEST_F(Program, CarriesAnImageToTheChipAndBackInEveryFormat) {
  ASSERT_EQ(Run("program isp51-8k random.bin --chip c --margin 1"), 0) << err_;
  EXPECT_THAT(out_, HasSubstr(">><Verify(VCC:5.25V) >\n>><Verify(VCC:4.75V) >\n"));
  EXPECT_THAT(out_, EndsWith("Sec\nisp51-8k: programmed with 8192 bytes and verified.\n"));
  for (const char* const file : {"back.hex", "back.s19", "back.bin"}) {
    ASSERT_EQ(Run("read isp51-8k --chip c -o " + std::string(file)), 0) << err_;
    EXPECT_EQ(Run("compare isp51-8k --chip c " + std::string(file)), 0) << out_ << err_;
    EXPECT_EQ(Run("verify isp51-8k --chip c --image " + std::string(file)), 0) << err_;
  }
  EXPECT_EQ(ReadText(folder_ / "back.bin"), ReadText(folder_ / "random.bin"));
  EXPECT_EQ(Run("blank isp51-8k --chip c"), 1);
  EXPECT_THAT(out_, HasSubstr(">>Device Address:00000000H  Device Data:"));
  EXPECT_THAT(err_, HasSubstr("fliglaf: isp51-8k: not blank at 0x0000: device "));

  EXPECT_EQ(Run("lock isp51-8k 2 --chip c"), 0) << err_;
  EXPECT_EQ(Run("verify isp51-8k random.bin --chip c"), 1) << "a locked chip cannot be read";
  EXPECT_EQ(Run("erase isp51-8k --chip c"), 0) << err_;
  EXPECT_EQ(Run("blank isp51-8k --chip c"), 0) << err_;
}

TEST_F(Program, TellsADeviceThatDiffersFromACheckThatCouldNotBeMade) {
  const std::string example = FLIGLAF_EXAMPLES "/blink.hex";
  EXPECT_EQ(Run("compare isp51-4k " + example + " --json"), 1);
  EXPECT_THAT(out_, HasSubstr("\"differences\": 60,"));
  EXPECT_THAT(out_, HasSubstr("\"result\": 0,")) << "a compare does not fail in the library";
  EXPECT_THAT(out_, HasSubstr("\"seconds\": 0.48,")) << "of the read before it, too";
  EXPECT_THAT(out_, HasSubstr("Read ok\\n>> 0.24Sec\\n>>Differences"));
  for (const char* const fault : {"no-programmer", "no-adapter", "supply", "usb-timeout",
                                  "usb-failure", "call=BlockTransfer", "call=EndRun"}) {
    EXPECT_EQ(Run("verify isp51-4k --no-signature " + example + " --fault " + fault), 3) << fault;
    EXPECT_THAT(err_, HasSubstr("fliglaf: ")) << fault;
  }
  for (const char* const device : {"isp51-4k", "isp51ee-8k", "jtag-page-16k", "two-wire-8k"}) {
    for (const char* const fault : {"supply", "usb-failure"}) {
      EXPECT_EQ(Run(std::string("read --no-signature -o x.hex ") + device + " --fault " + fault), 3)
          << device << ", " << fault;
      EXPECT_FALSE(fs::exists(folder_ / "x.hex"));
    }
  }
  EXPECT_EQ(Run("blank isp51-4k --fault no-chip"), 1);
  EXPECT_THAT(
      err_,
      HasSubstr("signature was read (Maker 00   Device 0000), expected Maker 1E   Device 5106"));
  EXPECT_EQ(Run("signature isp51-4k"), 0);
  EXPECT_EQ(Run("signature isp51-4k --fault no-chip --on-mismatch ignore"), 1);
  EXPECT_EQ(Run("blank isp51-4k --fault no-chip --on-mismatch ignore"), 1);
  EXPECT_THAT(out_, HasSubstr("Blank Check failed"));
}

TEST_F(Program, CombinesFaultsAndReportsThoseThatTheLogDoesNotShow) {
  std::ofstream(folder_ / "blank.bin", std::ios::binary) << std::string(4096, '\xFF');
  EXPECT_EQ(Run("compare isp51-4k blank.bin --fault stuck=0x10.1=0 --fault stuck=0x20.7=0"), 1);
  EXPECT_THAT(err_, HasSubstr("2 bytes differ"));
  EXPECT_EQ(Run("blank isp51-4k --fault call=EndRun:2"), 0);
  EXPECT_THAT(err_, HasSubstr("--fault call=EndRun:2: not reached: 1 call of EndRun in all\n"));
  EXPECT_EQ(Run("program isp51-4k blank.bin --no-signature --fault random=1"), 0) << err_;
  EXPECT_THAT(err_, HasSubstr("--fault random=1: no fault\n"));
  EXPECT_EQ(Run("program isp51-4k blank.bin --fault random=4"), 3) << err_;
  EXPECT_THAT(err_,
              testing::ContainsRegex("--fault random=4: 1 fault; the first at call [0-9]+: "));
}

TEST_F(Program, RefusesBadInputBeforeAnythingIsDone) {
  std::ofstream(folder_ / "sum.hex") << ":0100000000FE\n:00000001FF\n";
  std::ofstream(folder_ / "avr.hex") << ":020000040081"
                                        "79\n:0100000000FF\n:00000001FF\n";
  ExpectRefused({
      {"prgram x", "unknown command \"prgram\"; did you mean program?"},
      {"--versoin", "unknown option --versoin; did you mean --version?"},
      {"--chip c blank isp51-4k", "belongs after the command: fliglaf blank ... --chip\n"},
      {"blank isp51-4k --chp=c", "--chp: blank has no such option; did you mean --chip?\nSee \"fl"},
      {"blank isp51-4k --chip", "--chip: must be followed by FILE\nSee \"fliglaf help blank\"."},
      {"blank isp51-4k --chip c --chip d", "--chip: given twice, as c and d"},
      {"blank isp51-4k --json=1", "--json takes no value"},
      {"blank isp51-4k x", "blank: unexpected argument \"x\"\nSee"},
      {"blank isp51-4k --progress x", "must be auto, bar, json, lines or none"},
      {"blank", "blank: name the device"},
      {"program isp51-4k a --image b", "--image and FILE must not be given together"},
      {"program isp51-4kk random.bin", "did you mean isp51-4k"},
      {"program isp51-4k", "name the file"},
      {"program isp51-4k 'a\nb.hex'", "fliglaf: a\uFFFDb.hex: there is no such file\n"},
      {"program isp51-4k sum.hex", "sum.hex:1: "},
      {"program isp51-4k random.bin", "address 0x1000 lies outside isp51-4k"},
      {"program isp-page-16k avr.hex", "address 0x810000 lies outside isp-page-16k, whose memory "},
      {"program isp-page-16k avr.hex", "with --eeprom, and"},
      {"read isp51-4k -o none/x.hex", "none"},
      {"read isp51-4k -o x.txt", "x.txt: the name must end in .hex"},
      {"read isp51-4k --eeprom x.hex", "has no data memory"},
      {"signature isp51-4k --no-signature", "nothing to do"},
      {"lock isp51-4k", "lock: name the level; isp51-4k has levels 1 to 3"},
      {"lock isp51-4k 4", "lock: level 4; isp51-4k has levels 1 to 3"},
      {"lock two-wire-2k 1", "its lock byte: fliglaf config two-wire-2k lock=XX"},
      {"blank isp51-4k --record none/x.run", "none"},
      {"blank isp51-4k --vcd none/x.vcd", "none/x.vcd: there is no folder none"},
      {"config isp-page-16k --vcd .", ".: is a folder"},
      {"blank isp51-4k --fault smoke", "--fault smoke: unknown fault; must be one of no-pr"},
      {"blank isp51-4k --fault 'supply;no-chp'", "--fault no-chp: unknown fault; did you "},
      {"blank isp51-4k --fault supply=1", "--fault supply=1: takes no argument"},
      {"blank isp51-4k --fault call", "must be call=OPERATION[:NTH], as in call="},
      {"blank isp51-4k --fault call=flushqueu", "did you mean FlushQueue?"},
      {"blank isp51-4k --fault call=EndRun:0", "must be from 1 to 4294967295"},
      {"blank isp51-4k --fault stuck=4096.0=1", "the address must be from 0 to 4095"},
      {"config config-word-8 low=1 high=2 --parallel --fault stuck=2.0=1",
       "address must be 0 or 1"},
      {"blank isp51-4k --fault usb-timeout --fault usb-failure", "usb-failure: conflicts"},
      {"blank isp51-4k --fault stuck=1.2=0 --fault stuck=1.2=1", "at the other value"},
      {"blank isp51-4k --devices none", "none"},
  });
}

TEST_F(Program, ExplainsItselfInTheWidthOfTheTerminal) {
  EXPECT_EQ(Run(""), 2);
  EXPECT_THAT(err_, StartsWith("Usage: fliglaf COMMAND"));
  EXPECT_EQ(Run("-V"), 0);
  EXPECT_THAT(out_, StartsWith("fliglaf "));
  for (const std::size_t columns : {40U, 80U, 132U}) {
    setenv("COLUMNS", std::to_string(columns).c_str(), 1);
    for (const char* const command : {"", "program", "fuses", "chip", "replay"}) {
      EXPECT_EQ(Run(std::string("help ") + command), 0) << err_;
      std::istringstream lines(out_);
      std::size_t longest = 0;
      for (std::string line; std::getline(lines, line);) longest = std::max(longest, line.size());
      EXPECT_LE(longest, columns) << out_;
      EXPECT_GT(longest, columns / 3) << out_;
    }
  }
  unsetenv("COLUMNS");
  ASSERT_EQ(Run("program --help"), 0);
  const std::string help = out_;
  EXPECT_EQ(Run("help program"), 0);
  EXPECT_EQ(out_, help);
}

TEST_F(Program, StopsAtASignalWithTheSocketOff) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    fs::remove(folder_ / "err");
    const pid_t run =
        Start("program isp51-8k random.bin --no-erase --real-time --chip c --record r --vcd v");
    AwaitProgress("Program");
    kill(run, signal);
    EXPECT_EQ(Wait(run), 130) << err_;
    EXPECT_THAT(out_, HasSubstr(">><Program>\n>>Stopped\n>> "));
    EXPECT_EQ(Run("replay r --explain"), 0) << out_ << err_;
    EXPECT_THAT(ReadText(folder_ / "c"), StartsWith("fliglaf chip 1\ndevice isp51-8k\narea flash"));
    EXPECT_THAT(ReadText(folder_ / "v"), testing::ContainsRegex("\n0e\n#[0-9]+\n$"))
        << "vcc is off";
  }
}

TEST_F(Program, CarriesTheDataMemoryInAFileOfItsOwn) {
  std::ofstream(folder_ / "data.bin", std::ios::binary) << std::string(64, '\x5A');
  ASSERT_EQ(Run("program isp-page-16k random.bin --eeprom data.bin --chip c"), 0) << err_;
  ASSERT_EQ(Run("read isp-page-16k --chip c -o main.bin --eeprom ee.bin --image all.bin"), 0)
      << err_;
  EXPECT_EQ(ReadText(folder_ / "main.bin").substr(0, 8192), ReadText(folder_ / "random.bin"));
  EXPECT_EQ(ReadText(folder_ / "ee.bin"), std::string(64, '\x5A') + std::string(448, '\xFF'));
  EXPECT_EQ(Run("verify isp-page-16k --chip c --image all.bin"), 0) << err_;
  EXPECT_THAT(out_, HasSubstr("16896 bytes verified; 0x4200 to 0x441F of the image"));
  EXPECT_EQ(Run("verify isp-page-16k random.bin --chip c --record r"), 0) << "only what it gives";
  EXPECT_EQ(Run("replay r"), 0) << out_;
  EXPECT_EQ(Run("compare isp-page-16k --eeprom data.bin --chip c"), 0) << err_;
  EXPECT_THAT(out_, EndsWith("isp-page-16k: no difference in 64 bytes.\n"));
  EXPECT_EQ(Run("verify isp-page-16k --eeprom random.bin"), 2);
  EXPECT_THAT(err_, HasSubstr("address 0x0200 lies outside isp-page-16k, whose data memory"));
  EXPECT_EQ(Run("program isp-page-16k --eeprom data.bin --chip c"), 2);
  EXPECT_THAT(err_, HasSubstr("name its FILE too, or add --erase-all"));
  EXPECT_EQ(Run("verify isp-page-16k random.bin --chip c"), 0) << "nothing was cleared";
  EXPECT_EQ(Run("program isp-page-16k --eeprom data.bin --chip c --erase-all"), 0) << err_;
  EXPECT_THAT(out_, EndsWith("programmed with 64 bytes and verified.\n"));
  EXPECT_EQ(Run("verify isp-page-16k random.bin --chip c"), 1);
  EXPECT_THAT(err_, HasSubstr("isp-page-16k: differs at 0x0000: device FF, file "));
  EXPECT_EQ(Run("config isp-page-16k lock=FC --chip c"), 0) << err_;
  EXPECT_EQ(Run("read isp-page-16k --image all.bin --chip c"), 0);
  EXPECT_THAT(out_, EndsWith("Every word is its own address: the device is locked.\n"));
}

TEST_F(Program, RecordsWhatReplaysAndReportsWhatDoesNot) {
  const std::string example = FLIGLAF_EXAMPLES "/blink.hex";
  ASSERT_EQ(Run("program isp51-4k " + example + " --chip c --margin 2 --record a"), 0) << err_;
  EXPECT_EQ(Run("read isp51-4k --chip c -o x.bin --record b --fault usb-timeout"), 3);
  EXPECT_EQ(Run("compare isp51-4k --chip c x.bin --record c2"), 2) << "there is no such file";
  EXPECT_EQ(Run("blank isp51-4k --chip c --record d --fault call=BlockTransfer"), 3);
  EXPECT_EQ(Run("blank isp51-8k --record e --fault no-chip --on-mismatch retry"), 1);
  EXPECT_EQ(Run("replay a b d e"), 0) << out_ << err_;
  EXPECT_FALSE(fs::exists(folder_ / "c2"));

  std::string record = ReadText(folder_ / "d");
  record.replace(record.find("SetVcc(5000)"), 12, "SetVcc(5001)");
  std::ofstream(folder_ / "changed") << record;
  EXPECT_EQ(Run("replay changed d"), 1);
  EXPECT_EQ(Run("replay changed none"), 2);
}

TEST_F(Program, ShowsProgressAsAskedFor) {
  EXPECT_EQ(Run("program isp51-4k " FLIGLAF_EXAMPLES "/blink.hex --progress json"), 0);
  EXPECT_THAT(err_, StartsWith("{\"operation\":\"Erase\",\"percent\":1}\n"));
  EXPECT_THAT(err_, HasSubstr("{\"operation\":\"Program\",\"percent\":49}\n"));
  EXPECT_EQ(Run("blank isp51-4k --progress lines"), 0);
  EXPECT_THAT(err_, StartsWith("Blank Check 0 %\n"));
  EXPECT_EQ(Run("blank isp51-4k --progress none"), 0);
  EXPECT_EQ(err_, "");
  EXPECT_EQ(RunAtTerminal("blank isp51-4k", ""), 0);
  EXPECT_THAT(out_, testing::ContainsRegex("\rBlank Check    \\[#{10,} \\]  99 %\r {79}\r"));
  EXPECT_EQ(RunAtTerminal("blank isp51-4k", "", "TERM=dumb"), 0);
  EXPECT_THAT(out_, StartsWith("Blank Check 0 %\r\n"));
  EXPECT_EQ(Run("devices"), 0);
  EXPECT_THAT(out_, testing::ContainsRegex("isp51-8k +family +1 "));
}

}  // namespace
}  // namespace fliglaf
