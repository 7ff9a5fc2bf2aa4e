// Configuration words over the bit-serial interface, in every socket that there is, and what the
// log tells of them.
#include "parallel/config_word.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devices/kinds/config_word.h"
#include "parallel/config_mode.h"
#include "parallel/config_word_writer.h"
#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::Narrow;
using test::Tap;
using test::TestHost;
using testing::HasSubstr;

constexpr std::uint8_t kWriteConfigWord = 8;
constexpr std::int64_t kLastWord = 16398;

constexpr ConfigWordSocket kSockets[] = {
    {6, 1, 0},  {8, 1, 0},        {8, 5, 2},  {14, 1, 0}, {14, 22, 0}, {18, 1, 0},
    {20, 1, 0}, {20, 40, 1},      {28, 1, 0}, {28, 5, 5}, {28, 31, 0}, {40, 1, 0},
    {44, 1, 0}, {44, 1, 0, true}, {64, 1, 0}, {68, 1, 0}, {80, 1, 0},  {84, 1, 0}};

DeviceProfile Device(int words) {
  DeviceProfile device = test::Known(words == 2 ? "config-words-18" : "config-word-18");
  device.vcc_pins = {40, 39};
  device.gnd_pins = {20};
  device.vpp_pins = {1};
  device.write_time = device.chip.config_write_us = 5000;
  return device;
}

/// A host for the socket, with both words in its buffer.
class SocketHost : public TestHost {
 public:
  SocketHost(const ConfigWordSocket& socket, int words, bool vpp_first)
      : TestHost(Device(words), [&](const DeviceProfile& device, const simulator::Clock& clock) {
          ConfigWordSocket wired = socket;
          wired.vpp_first = vpp_first;
          return MakeConfigWordPart(device, wired, clock);
        }) {
    UseParallelPort();
    vars.quorinprgmode[0] = socket.mode;
    vars.quorinchippin[0] = socket.pins;
    vars.quorinbvcch[0] = words == 2 ? std::int16_t{1} : socket.kind;
    vars.quorinbvccpin[1] = socket.pins < 18 || socket.pins == 28 ? 0 : 39;
    vars.quorinwoption[1] = vpp_first ? 1 : 0;
    vars.quorinwoption[2] = socket.adapter ? 1 : 0;
    for (std::int64_t i = 0; i < 4; ++i) vars.quorinibuffer[kLastWord - 2 + i] = kWords[i];
  }

  static constexpr std::uint8_t kWords[] = {0x42, 0x2A, 0xD3, 0x15};
};

/// Writes below the driver, which reaches a device in mode 1 only.
void WriteWords(SocketHost& host) {
  platform::Form window;
  EngineRun run(host.vars, host.tap, host.desktop, window);
  host.tap.OpenProgrammer();
  host.tap.SetVcc(5000);
  host.tap.SetGndPin(20, 1);
  for (const std::uint8_t pin : {std::uint8_t{40}, std::uint8_t{39}}) host.tap.SetVccPin(pin, 1);
  constexpr std::uint8_t kShifter[] = {0x00, 0x08, 0x10, 0xA0, 0x02, 0x01, 0x00, 0x08, 0x08};
  std::uint8_t number = 0x36;
  for (const std::uint8_t value : kShifter) host.tap.WriteRegister(value, number++);
  parallel::WriteConfigWord(run);
}

TEST(ConfigWord, IsWrittenInEverySocket) {
  for (const ConfigWordSocket& socket : kSockets) {
    SCOPED_TRACE(std::to_string(socket.pins) + " pins, mode " + std::to_string(socket.mode));
    const bool two = socket.kind == 1;  // which tells the number of words, too
    for (const bool vpp_first : {false, true}) {
      SocketHost host(socket, two ? 2 : 1, vpp_first);
      WriteWords(host);
      EXPECT_EQ(host.cells(two ? "low1" : "low0")[0], 0xD3);
      EXPECT_EQ(host.cells(two ? "high1" : "high0")[0], 0x15);
      EXPECT_THAT(host.log(), HasSubstr(two ? ">>FIG:2A42H" : ">>FIG:15D3H"));
    }
  }
}

TEST(ConfigWord, WrongSocketOrMissingStepWritesNothing) {
  for (const ConfigWordSocket& socket : kSockets) {
    const auto writes = [&socket](const auto& spoil) {
      SocketHost host(socket, 1, false);
      spoil(host);
      WriteWords(host);
      return host.cells("low0")[0] != 0xFF;
    };
    const auto leave_out = [](std::string_view operation, std::int32_t value, std::int32_t target) {
      return [=](SocketHost& host) {
        host.tap.before = [=](const Tap::Call& call) {
          return call.operation != operation || call.value != value || call.target != target;
        };
      };
    };
    EXPECT_TRUE(writes([](SocketHost&) {})) << socket.pins;
    EXPECT_FALSE(writes([](SocketHost& host) { host.vars.quorinchippin[0] = 10; })) << socket.pins;
    EXPECT_FALSE(writes([](SocketHost& host) { host.vars.quorinwoption[1] = 1; })) << socket.pins;
    EXPECT_FALSE(writes([](SocketHost& host) { host.vars.quorinpwte[0] = 20; })) << socket.pins;
    EXPECT_FALSE(writes(leave_out("DelayMs", 400, 0))) << socket.pins;
    EXPECT_FALSE(writes(leave_out("DelayMs", 200, 0))) << socket.pins;
  }
}

TEST(ConfigWord, TwoWordsThroughTheDriver) {
  SocketHost host({18, 1, 0}, 2, false);
  EXPECT_EQ(host.Run(kWriteConfigWord), 0) << host.log();
  EXPECT_EQ(host.cells("low0")[0], 0x42);
  EXPECT_EQ(host.cells("high0")[0], 0x2A);
  EXPECT_EQ(host.cells("low1")[0], 0xD3);
  EXPECT_EQ(host.cells("high1")[0], 0x15);
  EXPECT_THAT(host.log(), HasSubstr(">><op8>\n\n>>FIG:2A42H    Oscillator Type:HS     WDT"));
}

TEST(ConfigWord, PackagesWithoutASocketOnlyWait) {
  SocketHost host({18, 1, 0}, 1, false);
  platform::Form window;
  EngineRun run(host.vars, host.tap, host.desktop, window);
  host.vars.quorinchippin[0] = 10;
  parallel::EnterConfigMode(run, 1);
  ASSERT_EQ(host.tap.calls.size(), 3U);
  EXPECT_EQ(host.tap.calls[0].operation, "SetVppPin");
  EXPECT_EQ(host.tap.calls[2].value, 200);
}

TEST(ConfigWordDescription, NamesEveryOscillatorAndFlag) {
  TestHost host;
  platform::Form window;
  EngineRun run(host.vars, host.tap, host.desktop, window);
  const auto describe = [&](int low, int high) {
    host.vars.quorinMainRtstr.Set(0, u"");
    DescribeConfigWord(run, static_cast<std::int16_t>(low), static_cast<std::int16_t>(high));
    return host.log();
  };
  const char* const oscillators[] = {
      "LP   ",
      "XT   ",
      "HS   ",
      "ExtClk Osc PORT I/Oon RA6 ",
      "INTRC Osc PORT I/Oon RA6  ",
      "INTRC Osc CLKO on RA6   ",
      "EXTRC Osc PORT I/O on RA6   ",
      "EXTRC Osc CLKO on RA6   ",
  };
  for (int type = 0; type < 8; ++type) {
    const std::string text = describe((type & 4) << 2 | (type & 3), 0);
    EXPECT_THAT(text,
                HasSubstr("H    Oscillator Type:" + std::string(oscillators[type]) + "  WDT"));
  }
  const auto settings = [&](int low, int high) {
    const std::string text = describe(low, high);
    return text.substr(text.find("WDT") + 3);
  };
  EXPECT_THAT(settings(0x00, 0x00), HasSubstr(" Disable Block Protect: Enable   /PWRTE : Enable  "
                                              "BODEN : Disable \n\n"));
  EXPECT_THAT(settings(0x04, 0x00), HasSubstr(" Enable Block Protect: Enable "));
  EXPECT_THAT(settings(0x08, 0x20), HasSubstr("Block Protect: Disable   /PWRTE : Disable  "));
  EXPECT_THAT(settings(0x40, 0x00), HasSubstr("BODEN : Enable \n\n"));
  host.vars.quorinprgmode[0] = 2;
  EXPECT_EQ(describe(0xFF, 0x00), "\n>>FIG:00FFH    Oscillator Type:LP   \n\n");
}

}  // namespace
}  // namespace fliglaf
