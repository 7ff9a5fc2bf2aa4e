// Shifts and scans: what is queued, read back clock by clock as a device would see it.
#include "families/tap.h"

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "families/hardware_tap.h"
#include "families/software_tap.h"
#include "platform/portable/portable_desktop.h"
#include "record/calls.h"
#include "simulator/tap.h"
#include "usb/components/bits.h"
#include "usb/components/funnel_programmer.h"

namespace fliglaf {
namespace {

using simulator::TapState;
using testing::ElementsAre;

/// Writes down the calls as a record does; answers register reads.
class CallList : public FunnelProgrammer {
 public:
  void usbcomwrite(std::span<const std::uint8_t>) override { calls.emplace_back("packet"); }
  void usbbulkread(std::span<std::uint8_t>, std::uint8_t&) override {}
  std::u16string datstr(std::int32_t, std::int32_t) override { return {}; }

  std::vector<std::string> calls;
  std::vector<std::pair<std::uint8_t, std::uint8_t>> queued;  ///< register, value
  std::vector<std::uint8_t> answers;

 protected:
  std::int32_t Perform(Op op, const Arguments& arguments) override {
    calls.push_back(record::Format({.operation = &Row(op), .arguments = arguments}));
    if (op == Op::kQueueRegisterWrite) {
      queued.emplace_back(static_cast<std::uint8_t>(arguments[1]),
                          static_cast<std::uint8_t>(arguments[0]));
    }
    if (op != Op::kReadRegister || answers.empty()) return 0;
    const std::uint8_t answer = answers.front();
    answers.erase(answers.begin());
    return answer;
  }
};

struct NoTime : platform::TimeSource {
  [[nodiscard]] std::int64_t Now() const override { return 0; }
  [[nodiscard]] std::optional<std::int64_t> NextEvent() const override { return std::nullopt; }
  void WaitUntil(std::int64_t) override {}
};

/// A clock of the device: TMS and TDI as TCK rises.
struct Clock {
  bool tms;
  bool tdi;
};

/// What the queued writes are for a device on kJtagPort0.
std::vector<Clock> Clocks(const CallList& io) {
  std::vector<Clock> clocks;
  const auto shift = [&clocks](unsigned value, int count, bool high_first, bool last) {
    for (int i = 0; i < count; ++i) {
      const unsigned bit = high_first ? value >> (7 - i) : value >> i;
      clocks.push_back({last && i == count - 1, (bit & 1) != 0});
    }
  };
  bool tck = false;
  for (const auto& [number, value] : io.queued) {
    switch (number) {
      case 0x00:
        EXPECT_EQ(value & 0xA0, 0xA0);
        if ((value & 0x10) != 0 && !tck) clocks.push_back({(value & 4) != 0, (value & 1) != 0});
        tck = (value & 0x10) != 0;
        break;
      case 0x8E:
        shift(value, 8, true, false);
        break;
      case 0x90:
        EXPECT_EQ(value & 0xC0, 0);
        shift(value, 6, false, false);
        break;
      case 0xC1:
        shift(value, 1, true, true);
        break;
      case 0xC2:
        shift(value, 2, true, true);
        break;
      case 0xC4:
        shift(value, 8, true, true);
        break;
      case 0xC5:
        clocks.insert(clocks.end(), {{true, false}, {false, false}});
        break;
      case 0xC6:
        clocks.insert(clocks.end(), {{true, false}, {false, false}, {false, false}});
        break;
      default:
        ADD_FAILURE() << "register " << int{number};
    }
  }
  return clocks;
}

class TapTest : public testing::Test {
 protected:
  TapTest() { lines_.jtag = kJtagPort0; }

  void Forget() {
    io_.calls.clear();
    io_.queued.clear();
  }

  /// The bits that a scan shifts into a device that follows it from Run-Test/Idle, where it ends.
  std::uint64_t Scanned(TapState shift_state, int bits) {
    TapState state = TapState::kRunTestIdle;
    std::uint64_t value = 0;
    int count = 0;
    for (const Clock& clock : Clocks(io_)) {
      if (state == shift_state) value |= std::uint64_t{clock.tdi} << count++;
      state = NextState(state, clock.tms);
    }
    EXPECT_EQ(state, TapState::kRunTestIdle);
    EXPECT_EQ(count, bits);
    return value;
  }

  SharedVariables vars_;
  CallList io_;
  NoTime time_;
  platform::PortableDesktop desktop_{time_};
  platform::Form window_;
  platform::Timer watchdog_{desktop_, "none", [] {}};
  WindowLines lines_;
  fliglaf::Run run_{vars_, io_, desktop_, window_, watchdog_};
  SoftwareTap software_{run_, lines_.jtag};
  HardwareTap hardware_{run_, lines_.jtag};
};

TEST_F(TapTest, ScansCarryTheirBitsInBothWalks) {
  std::mt19937 random(5);
  const auto check = [&](const std::string& walk, auto& tap,
                         std::initializer_list<std::int16_t> widths) {
    for (const std::int16_t width : widths) {
      const auto value = static_cast<std::int32_t>(random());
      const auto bits = static_cast<std::uint32_t>(value) & (0xFFFFFFFFU >> (32 - width));
      SCOPED_TRACE(walk + ' ' + std::to_string(width));
      Forget();
      tap.scanDr(value, width);
      EXPECT_EQ(Scanned(TapState::kShiftDr, width), bits);
      Forget();
      tap.scanIr(value, width);
      EXPECT_EQ(Scanned(TapState::kShiftIr, width), bits);
    }
  };
  check("software", software_, {1, 4, 8, 15, 16});
  check("hardware", hardware_, {1, 2, 10, 16, 17, 18, 19, 32});
}

TEST_F(TapTest, EveryWriteIsCounted) {
  const auto writes = [this](const std::function<void()>& body) {
    Forget();
    body();
    EXPECT_EQ(io_.calls.size(), io_.queued.size());
    return io_.calls.size();
  };
  EXPECT_EQ(writes([this] { software_.shiftBits(0x1234, 15); }), 7U);
  EXPECT_EQ(writes([this] { software_.shiftBits(0x1234, 12); }), 5U);  // the last bit only
  EXPECT_EQ(writes([this] { hardware_.shiftBits(0x1234, 12); }), 0U);
  EXPECT_EQ(writes([this] { hardware_.shiftBits(-1, 32); }), 4U);
  EXPECT_EQ(writes([this] { software_.pulseTckN(-3); }), 0U);
  EXPECT_EQ(writes([this] { software_.resetTap(); }), 16U);
  writes([this] { software_.scanIr(0x0C, 4); });
  EXPECT_EQ(Clocks(io_).size(), 10U);
  EXPECT_EQ(lines_.jtag.tdiState, 0);
}

TEST_F(TapTest, APulseIsTheClockSetHighAndLow) {
  software_.setTdi(1);
  Forget();
  software_.pulseTck();
  EXPECT_THAT(io_.calls,
              ElementsAre("QueueRegisterWrite(0xB1, 0x00)", "QueueRegisterWrite(0xA1, 0x00)"));
}

TEST_F(TapTest, CapturesInSoftware) {
  EXPECT_EQ(software_.shiftBitsCapture(0x7300, 15), 0);
  EXPECT_THAT(io_.calls,
              ElementsAre("QueueRegisterWrite(0x01, 0x8F)", "QueueRegisterWrite(0x33, 0x90)",
                          "QueueRegisterWrite(0xA1, 0x00)", "QueueRegisterWrite(0xA5, 0x00)",
                          "QueueRegisterWrite(0xB5, 0x00)", "QueueRegisterWrite(0xA5, 0x00)",
                          "QueueRegisterWrite(0xA4, 0x00)"));
  Forget();
  io_.answers = {0x01};
  EXPECT_EQ(software_.shiftBitsCapture(0x3300, -15), 0x80);  // captured first: bit 0
  io_.calls.resize(4);
  EXPECT_THAT(io_.calls, ElementsAre("FlushQueue()", "WriteRegister(0x01, 0x8F)",
                                     "ReadRegister(0x21)", "WriteRegister(0x33, 0x90)"));
  Forget();
  EXPECT_EQ(software_.shiftBitsCapture(0x3300, 11), 0);
  EXPECT_TRUE(io_.calls.empty());
}

TEST_F(TapTest, CapturesInHardware) {
  // The bytes of the code 0x3A5C703F as they come, first bit in bit 7.
  io_.answers = {0xFC, 0x0E, 0x3A, 0x5C};
  EXPECT_EQ(hardware_.ReadIdentification(), 0x3C71F);
  io_.calls.resize(6);
  EXPECT_THAT(io_.calls,
              ElementsAre("QueueRegisterWrite(0x00, 0xC6)", "FlushQueue()", "WriteLatch(0x02, 1)",
                          "DelayMs(100)", "WriteRegister(0x01, 0x8F)", "ReadRegister(0x21)"));
  Forget();
  hardware_.shiftBitsCapture(0, 11);
  EXPECT_EQ(io_.calls.size(), 6U + 1 + 3 + 1);
  EXPECT_EQ(io_.calls[6], "QueueRegisterWrite(0x01, 0x8F)");
  Forget();
  EXPECT_EQ(hardware_.shiftBitsCapture(0, 15), 0);
  EXPECT_THAT(io_.calls, ElementsAre("DelayMs(100)"));
}

TEST(ReverseBits, KnowsTheWidthsThatAreUsed) {
  EXPECT_EQ(reverseBits(0x01, 8), 0x80);
  EXPECT_EQ(reverseBits(0x5, 3), 0x5);
  EXPECT_EQ(reverseBits(0xFFFF, 11), 0x7FF);
  EXPECT_EQ(reverseBits(-2, 4), 0x7);
  EXPECT_EQ(reverseBits(0x1F, 5), 0);
}

}  // namespace
}  // namespace fliglaf
