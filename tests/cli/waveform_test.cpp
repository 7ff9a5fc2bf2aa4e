// Dumps of runs, read by the decoders of sigrok-cli: what they find is what the algorithm meant. It
// ends with status 0 even when it fails, so only what it prints counts.
#include <algorithm>
#include <regex>
#include <vector>

#include "tests/cli/program_fixture.h"

namespace fliglaf {
namespace {

using test::ReadText;
using testing::ElementsAre;
using testing::HasSubstr;

class Waveforms : public test::ProgramTest {
 protected:
  void SetUp() override {
    if (Wait(StartCommand("sigrok-cli --version")) != 0)
      GTEST_SKIP() << "sigrok-cli is not installed";
  }

  /// Runs an operation that succeeds, and checks that sigrok-cli reads the dump to its end.
  void Dump(const std::string& arguments) {
    ASSERT_EQ(Run(arguments + " --vcd vcd --record run --devices " FLIGLAF_RECORD_DEVICES), 0)
        << err_;
    const std::string dump = ReadText(folder_ / "vcd");
    const std::string end = dump.substr(dump.rfind('#') + 1);
    EXPECT_THAT(Sigrok("--show"), HasSubstr("Logic sample count: " + end));
  }
  std::string Sigrok(const std::string& arguments) {
    Wait(StartCommand("sigrok-cli -I vcd -i vcd " + arguments));
    EXPECT_EQ(err_, "");
    return out_;
  }

  /// What went through the test access port after its reset: "IR 0x4/4" for four bits, with what
  /// came back behind the scans of data.
  std::vector<std::string> Scans() {
    const std::string text = Sigrok(
        "-P jtag:tck=tck:tms=tms:tdi=tdi:tdo=tdo "
        "-A jtag=bitstring-tdi:bitstring-tdo:test-logic-reset");
    const std::string after_reset = text.substr(text.find("TEST-LOGIC-RESET"));
    static const std::regex scan(R"((IR|DR) TD(I|O): [01]+ \((0x[0-9a-f]+)\), (\d+) bits)");
    std::vector<std::string> scans;
    for (std::sregex_iterator found(after_reset.begin(), after_reset.end(), scan), end;
         found != end; ++found) {
      const auto& part = *found;
      if (part[2] == "I") {
        scans.push_back(part.str(1) + " " + part.str(3) + "/" + part.str(4));
      } else if (part[1] == "DR") {
        scans.back() += " " + part.str(3);
      }
    }
    return scans;
  }
};

/// Families 4 to 7: the host walks TMS and TCK.
TEST_F(Waveforms, ScansThatTheHostWalks) {
  Dump("signature fam5-small");
  EXPECT_THAT(Scans(),
              ElementsAre("IR 0xc/4", "DR 0x1/1 0x0",                  // AVR_RESET
                          "IR 0x4/4", "DR 0xa370/16 0x0", "IR 0x5/4",  // PROG_ENABLE, PROG_COMMANDS
                          "DR 0x2308/15 0x2ff",                        // enter signature read
                          "DR 0x300/15 0x208", "DR 0x3200/15 0x200", "DR 0x3300/15 0x21e",
                          "DR 0x301/15 0x200", "DR 0x3200/15 0x201", "DR 0x3300/15 0x294",
                          "DR 0x302/15 0x200", "DR 0x3200/15 0x202", "DR 0x3300/15 0x205"));
}

/// Families 8 to 11: the programmer walks.
TEST_F(Waveforms, ScansThatTheProgrammerWalks) {
  std::ofstream(folder_ / "image.bin", std::ios::binary) << "\x12\x34\x56";
  Dump("program fam9-tiny image.bin --no-erase");
  const std::vector<std::string> scans = Scans();
  const auto from = [&scans](const char* scan, std::ptrdiff_t count) {
    const auto first = std::ranges::find(scans, scan);
    const auto available = std::distance(first, scans.end());
    return std::vector<std::string>(first, first + std::min(count, available));
  };
  EXPECT_THAT(from("IR 0x1801/16", 11),  // the core is reset and halted, the debug register set
              ElementsAre("IR 0x1801/16", "IR 0x1804/16", "IR 0x2804/16", "IR 0x2004/16",
                          "IR 0x1004/16", "IR 0x4004/16", "IR 0x2fff/16", "IR 0x30c1/16",
                          "IR 0x30c1/16", "DR 0x78400/19 0x70800", "IR 0x30c1/16"));
  EXPECT_THAT(scans, testing::Contains("DR 0x0/33 0x10009087")) << "identification";
  EXPECT_THAT(from("IR 0x4085/16", 16),  // scale, address 0, then each byte in programming mode
              ElementsAre("IR 0x4085/16", "DR 0x386/10 0x0", "IR 0x4084/16", "DR 0x30000/18 0x0",
                          "IR 0x4082/16", "DR 0x310/10 0x0", "IR 0x4083/16", "DR 0x312/10 0x0",
                          "IR 0x4082/16", "DR 0x310/10 0x0", "IR 0x4083/16", "DR 0x334/10 0x0",
                          "IR 0x4082/16", "DR 0x310/10 0x0", "IR 0x4083/16", "DR 0x356/10 0x0"));
}

}  // namespace
}  // namespace fliglaf
