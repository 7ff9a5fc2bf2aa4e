// Dumps of runs, read by the decoders of sigrok-cli: what they find is what the algorithm meant. It
// ends with status 0 whatever becomes of it, so only what it prints counts.
#include <algorithm>
#include <array>
#include <bitset>
#include <regex>
#include <utility>
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

/// A serial device: the line that frames its instructions, by name, level and port register.
struct SerialCase {
  const char* device;
  const char* select;
  bool active_high;
  std::size_t port;
  int bit;
  std::size_t image_bytes;
};

/// The bytes that a record has the shifter send to a selected device: 0 where it captures the
/// answer.
struct Exchange {
  std::string sent;
  std::vector<bool> captures;
};

Exchange RecordedExchange(const std::string& record, const SerialCase& device) {
  static const std::regex call(R"((?:(\d+) \* )?(\w+)\((\w+), (\w+)\).*)");
  std::array<int, 12> ports;
  ports.fill(0xFF);
  Exchange exchange;
  const auto write = [&](int value, std::size_t number) {
    if (number < ports.size()) ports[number] = value;
    if (number != 0x8E && number != 0x8F) return;
    const bool high = (ports[device.port] & device.bit) != 0;
    if (high != device.active_high) return;
    exchange.captures.push_back(number == 0x8F);
    exchange.sent += static_cast<char>(number == 0x8E ? value : 0);
  };
  std::vector<std::pair<int, std::size_t>> queue;
  std::istringstream lines(record.substr(record.find("[traffic]")));
  std::smatch part;
  for (std::string line; std::getline(lines, line);) {
    if (line == "FlushQueue()") {
      for (const auto& [value, number] : queue) write(value, number);
      queue.clear();
    }
    if (!std::regex_match(line, part, call)) continue;
    const int times = part[1].matched ? std::stoi(part[1]) : 1;
    for (int i = 0; i < times; ++i) {
      const std::pair entry(std::stoi(part[3], nullptr, 0), std::stoul(part[4], nullptr, 0));
      if (part[2] == "QueueRegisterWrite") queue.push_back(entry);
      if (part[2] == "WriteRegister" || part[2] == "WriteLatch") write(entry.first, entry.second);
    }
  }
  return exchange;
}

TEST_F(Waveforms, SerialFamiliesSendWhatTheRecordSays) {
  for (const SerialCase& device : {SerialCase{"isp51-tiny", "reset", true, 2, 0x08, 256},
                                   SerialCase{"fam2-tiny", "reset", true, 2, 0x08, 48},
                                   SerialCase{"fam3-tiny", "reset", false, 2, 0x08, 64},
                                   SerialCase{"fam13-tiny", "reset", false, 2, 0x08, 64},
                                   SerialCase{"fam14-tiny", "reset", false, 2, 0x08, 64},
                                   SerialCase{"fam15-tiny", "cs", false, 0, 0x04, 64}}) {
    const std::string image = ReadText(folder_ / "random.bin").substr(0, device.image_bytes);
    std::ofstream(folder_ / "image.bin", std::ios::binary) << image;
    Dump("program " + std::string(device.device) + " image.bin");
    const std::string spi = "-P spi:clk=sck:mosi=mosi:miso=miso:cs=" + std::string(device.select) +
                            (device.active_high ? ":cs_polarity=active-high" : "");
    const auto [sent, captures] = RecordedExchange(ReadText(folder_ / "run"), device);
    EXPECT_TRUE(Sigrok(spi + " -B spi=mosi") == sent) << device.device;
    const std::string answers = Sigrok(spi + " -B spi=miso");
    ASSERT_EQ(answers.size(), sent.size()) << device.device;
    std::string captured;
    for (std::size_t i = 0; i < answers.size(); ++i) {
      if (captures[i]) captured += answers[i];
    }
    EXPECT_NE(captured.find(image), std::string::npos) << device.device << " is verified";
  }
}

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

/// The bits that a record puts on the data line, and those that it captured there.
std::string RecordedBits(const std::string& record) {
  static const std::regex call(
      R"((?:(\d+) \* )?(QueueRegisterWrite|WriteRegister)\((\w+), 0x(C9|CB|C8)\)|ReadRegister\(0x21\) = (\w+))");
  std::string bits;
  for (std::sregex_iterator found(record.begin(), record.end(), call), end; found != end; ++found) {
    const auto& part = *found;
    const int times = part[1].matched ? std::stoi(part[1]) : 1;
    if (part[5].matched) {
      bits += std::bitset<8>(std::stoul(part[5], nullptr, 0)).to_string();
    }
    const unsigned value =
        part[3].matched ? static_cast<unsigned>(std::stoul(part[3], nullptr, 0)) : 0;
    for (int i = 0; i < times && part[4] == "C9"; ++i) bits += value == 0 ? '0' : '1';
    for (int bit = 0; bit < 8 && part[4] == "CB"; ++bit)
      bits += (value >> bit & 1) == 0 ? '0' : '1';
  }
  return bits;
}

TEST_F(Waveforms, TwoLineFamiliesShowEveryBitOfAFrame) {
  Dump("signature fam12-tiny");
  const std::string text = Sigrok("-P spi:clk=clk:mosi=data:wordsize=16 -A spi=mosi-data");
  std::string bits;
  static const std::regex word(R"(spi-1: ([0-9A-F]+))");
  for (std::sregex_iterator found(text.begin(), text.end(), word), end; found != end; ++found) {
    bits += std::bitset<16>(std::stoul(found->str(1), nullptr, 16)).to_string();
  }
  const std::string recorded = RecordedBits(ReadText(folder_ / "run"));
  const std::size_t start = bits.find(recorded.substr(0, 60));  // behind the clocks of the power-up
  ASSERT_NE(start, std::string::npos) << bits;
  EXPECT_EQ(bits.substr(start), recorded.substr(0, bits.size() - start));
  EXPECT_GT(bits.size() - start + 16, recorded.size());
}

}  // namespace
}  // namespace fliglaf
