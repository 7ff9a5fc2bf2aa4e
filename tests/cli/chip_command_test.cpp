// The simulated chip under other hands: OpenOCD's, which know nothing of this code, and those of
// clients that behave badly.
#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <netinet/in.h>
#include <random>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "tests/cli/program_fixture.h"

namespace {

using fliglaf::test::ReadText;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// Bytes as SVF has a scan: the first one on the right, since bit 0 goes first.
std::string Hex(const std::string& bytes) {
  std::string digits;
  for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte) {
    char text[3];
    std::snprintf(text, sizeof(text), "%02X", static_cast<unsigned char>(*byte));
    digits += text;
  }
  return digits;
}

// Instructions and command words as data sheets of parts with the AVR JTAG programming interface
// have them, in the Serial Vector Format.
enum Instruction { kProgEnable = 4, kProgCommands, kProgPageLoad, kProgPageRead, kAvrReset = 12 };
enum class PageRegister { kByte, kPage };  ///< how a page passes: see family 4, and 5 to 7

/// Every instruction scan has to bring 01 back in its lowest bits.
std::string Select(Instruction instruction) {
  return std::string("SIR 4 TDI(") + "0123456789ABCDEF"[instruction] + ") TDO(1) MASK(3);\n";
}
std::string Shift(const std::string& tdi, std::size_t bits, const std::string& check = {}) {
  return "SDR " + std::to_string(bits) + " TDI(" + tdi + ")" + check + ";\n";
}
std::string Word(unsigned word) {
  return Hex({static_cast<char>(word & 0xFF), static_cast<char>(word >> 8)});
}
std::string Command(const std::vector<unsigned>& words) {
  std::string text = Select(kProgCommands);
  for (const unsigned word : words) text += Shift(Word(word), 15);
  return text;
}
/// The instruction scan ahead of the wait has an answer, so that it begins when the chip has got
/// all commands. Bit 9 of a command's answer is the ready bit.
std::string AwaitReady(unsigned word) {
  return Select(kProgCommands) + "RUNTEST IDLE 25E-3 SEC;\n" +
         Shift(Word(word), 15, " TDO(0200) MASK(0200)");
}
std::string LoadPage(PageRegister kind, const std::string& page) {
  std::string text = Select(kProgPageLoad);
  if (kind == PageRegister::kPage) return text + Shift(Hex(page), 8 * page.size());
  for (const char byte : page) text += Shift(Hex({byte}), 8);
  return text;
}
/// The long register puts out a byte that means nothing ahead of the page.
std::string CheckPage(PageRegister kind, const std::string& page) {
  std::string text = Select(kProgPageRead);
  if (kind == PageRegister::kPage) {
    const std::string mask(2 * page.size(), 'F');
    return text + Shift(std::string(2 * page.size() + 2, '0'), 8 * page.size() + 8,
                        " TDO(" + Hex(page) + "00) MASK(" + mask + "00)");
  }
  for (const char byte : page) text += Shift("00", 8, " TDO(" + Hex({byte}) + ") MASK(FF)");
  return text;
}

/// Erases the chip, programs one page at `word` and reads it back, comparing with `expected`.
std::string ProgramAndCheck(PageRegister kind, unsigned word, const std::string& page,
                            const std::string& expected) {
  const unsigned high = 0x0700 | word >> 8;
  const unsigned low = 0x0300 | (word & 0xFF);
  return Select(kAvrReset) + Shift("1", 1) + Select(kProgEnable) + Shift("A370", 16) +
         Command({0x2380, 0x3180, 0x3380, 0x3380}) + AwaitReady(0x3380) +
         Command({0x2310, high, low}) + LoadPage(kind, page) +
         Command({0x3700, 0x3500, 0x3700, 0x3700}) + AwaitReady(0x3700) +
         Command({0x2302, high, low}) + CheckPage(kind, expected) + Command({0x2300, 0x3300}) +
         Select(kProgEnable) + Shift("0000", 16) + Select(kAvrReset) + Shift("0", 1);
}

class ChipCommand : public fliglaf::test::ProgramTest {
 protected:
  ~ChipCommand() override {
    if (chip_ > 0) kill(chip_, SIGKILL);
  }

  /// Starts the program on `device` with the chip file c; it has its port when this returns.
  void Offer(const std::string& device) {
    std::filesystem::remove(folder_ / "out");
    chip_ = Start("chip " + device + " --remote-bitbang 0 --chip c");
    constexpr std::string_view kBefore = " port ";
    std::string line;
    for (int wait = 0; wait < 2000 && !line.ends_with('\n'); ++wait) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      line = ReadText(folder_ / "out");
    }
    ASSERT_THAT(line, EndsWith("\n")) << ReadText(folder_ / "err");
    port_ = std::stoi(line.substr(line.find(kBefore) + kBefore.size()));
  }
  /// The exit status of the program.
  int Ended() { return Wait(std::exchange(chip_, 0)); }

  /// Has OpenOCD scan a chain of one part and run `commands`; its exit status, its output in log_.
  int RunOpenOcd(int instruction_bits, const std::string& commands) {
    const std::string command =
        "cd '" + folder_.string() +
        "' && exec openocd -c 'gdb_port disabled; telnet_port disabled; tcl_port disabled;"
        "adapter driver remote_bitbang; remote_bitbang host 127.0.0.1; remote_bitbang port " +
        std::to_string(port_) + "; jtag newtap chip tap -irlen " +
        std::to_string(instruction_bits) + "; init;" + commands + " shutdown' >log 2>&1 </dev/null";
    const int status = std::system(command.c_str());
    log_ = ReadText(folder_ / "log");
    return status;
  }
  static bool HasOpenOcd() { return std::system("command -v openocd >/dev/null") == 0; }

  /// A connection to the program; -1 when it is refused.
  [[nodiscard]] int Connect() const {
    const int client = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port_));
    if (connect(client, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) return client;
    close(client);
    return -1;
  }
  /// Sends `requests` and waits for one answer.
  static char Ask(int client, std::string_view requests) {
    char answer = 0;
    EXPECT_EQ(send(client, requests.data(), requests.size(), MSG_NOSIGNAL), std::ssize(requests));
    EXPECT_EQ(recv(client, &answer, 1, 0), 1);
    return answer;
  }

  pid_t chip_ = 0;
  int port_ = 0;
  std::string log_;
};

TEST_F(ChipCommand, OpenOcdFindsThePartOnEveryWiring) {
  if (!HasOpenOcd()) GTEST_SKIP() << "openocd is not installed";
  const struct {
    const char* device;
    int instruction_bits;
    const char* code;
  } parts[] = {{"jtag-byte-16k", 4, "0x0940303f"},
               {"jtag-page-64k", 4, "0x0960203f"},
               {"jtag-flash-16k", 16, "0x10004087"},
               {"jtag-flash-32k-adapter22", 16, "0x1000a087"}};
  for (const auto& part : parts) {
    Offer(part.device);
    EXPECT_EQ(RunOpenOcd(part.instruction_bits, ""), 0) << log_;
    EXPECT_THAT(log_, HasSubstr("tap/device found: " + std::string(part.code)));
    EXPECT_EQ(Ended(), 0) << err_;
    std::filesystem::remove(folder_ / "c");
  }
}

TEST_F(ChipCommand, OpenOcdProgramsAPageThatWeRead) {
  if (!HasOpenOcd()) GTEST_SKIP() << "openocd is not installed";
  const struct {
    const char* device;
    PageRegister kind;
  } parts[] = {{"jtag-byte-16k", PageRegister::kByte}, {"jtag-page2-32k", PageRegister::kPage}};
  constexpr std::size_t kPage = 128;
  constexpr std::size_t kStart = 77 * kPage;
  std::mt19937 random(3);
  for (const auto& part : parts) {
    std::string page(kPage, '\0');
    for (char& byte : page) byte = static_cast<char>(random());
    std::string other = page;
    other.back() = static_cast<char>(other.back() ^ 0x80);
    for (const auto& expected : {other, page}) {
      std::ofstream(folder_ / "page.svf") << ProgramAndCheck(part.kind, kStart / 2, page, expected);
      Offer(part.device);
      EXPECT_EQ(RunOpenOcd(4, "svf page.svf;") == 0, expected == page) << log_;
      EXPECT_EQ(Ended(), 0) << err_;
    }
    ASSERT_EQ(Run("read " + std::string(part.device) + " --chip c -o back.bin"), 0) << err_;
    std::string image = ReadText(folder_ / "back.bin");
    EXPECT_EQ(image.substr(kStart, kPage), page);
    image.erase(kStart, kPage);
    EXPECT_EQ(image.find_first_not_of('\xFF'), std::string::npos) << "only that page";
    std::filesystem::remove(folder_ / "c");
  }
}

TEST_F(ChipCommand, KeepsTheChipHoweverItEnds) {
  const auto expect_end = [this](int status) {
    EXPECT_EQ(Ended(), status) << err_;
    EXPECT_THAT(ReadText(folder_ / "c"), StartsWith("fliglaf chip 1\ndevice jtag-byte-16k\n"));
    std::filesystem::remove(folder_ / "c");
  };
  const std::string_view first_code_bit = "2626262626042604040R";
  for (const bool quits : {true, false}) {
    Offer("jtag-byte-16k");
    const int client = Connect();
    EXPECT_EQ(Ask(client, first_code_bit), '1');
    EXPECT_EQ(Connect(), -1) << "one client at a time";
    if (quits) send(client, "Q", 1, 0);
    close(client);
    expect_end(0);
  }
  Offer("jtag-byte-16k");
  int client = Connect();
  send(client, "GET /", 5, 0);
  expect_end(3);
  EXPECT_THAT(err_, HasSubstr("the client sent 0x47, which is not a request"));
  close(client);

  for (const bool connected : {false, true}) {
    Offer("jtag-byte-16k");
    client = connected ? Connect() : -1;
    EXPECT_TRUE(!connected || Ask(client, first_code_bit) == '1');
    kill(chip_, SIGTERM);
    expect_end(130);
    close(client);
  }
}

TEST_F(ChipCommand, RefusesWhatHasNoPort) {
  EXPECT_EQ(Run("chip isp51-8k --remote-bitbang 0 --chip c"), 2);
  EXPECT_THAT(err_, HasSubstr("isp51-8k: family 1 has no JTAG lines; choose a device of"));
  EXPECT_EQ(Run("chip jtag-byte-16k --remote-bitbang 65536"), 2);
  EXPECT_THAT(err_, HasSubstr("65536: must be a number from 0 to 65535"));
  Offer("jtag-byte-16k");
  const std::string taken = std::to_string(port_);
  const pid_t first = std::exchange(chip_, 0);
  EXPECT_EQ(Run("chip jtag-byte-16k --remote-bitbang " + taken), 2);
  EXPECT_THAT(err_,
              HasSubstr("port " + taken + " is not available: Address already in use; 0 takes"));
  kill(first, SIGTERM);
  EXPECT_EQ(Wait(first), 130);
}

}  // namespace
