// The test access port: its states against the standard, its lines as the programmer's commands
// move them.
#include "simulator/chips/jtag_chip.h"

#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "simulator/shifter.h"

namespace fliglaf::simulator {
namespace {

using enum TapState;

TapState Walk(TapState from, std::string_view tms) {
  for (const char level : tms) from = NextState(from, level == '1');
  return from;
}

TEST(Tap, WalksAsTheStandardHasIt) {
  for (int state = 0; state < 16; ++state) {
    EXPECT_EQ(Walk(static_cast<TapState>(state), "11111"), kTestLogicReset) << state;
  }
  EXPECT_EQ(Walk(kTestLogicReset, "1"), kTestLogicReset);
  EXPECT_EQ(Walk(kTestLogicReset, "000"), kRunTestIdle);

  // From the same place, one level sends data scans and instruction scans apart.
  const auto check_scan = [](std::string_view select, TapState capture, TapState shift,
                             TapState exit1, TapState pause, TapState exit2, TapState update) {
    const auto at = [select](std::string_view rest) {
      return Walk(Walk(kRunTestIdle, select), rest);
    };
    EXPECT_EQ(at("0"), capture);
    EXPECT_EQ(at("00000"), shift);
    EXPECT_EQ(at("01"), exit1);
    EXPECT_EQ(at("001"), exit1);
    EXPECT_EQ(at("00100"), pause);
    EXPECT_EQ(at("00101"), exit2);
    EXPECT_EQ(at("001010"), shift);
    EXPECT_EQ(at("0011"), update);
    EXPECT_EQ(at("001011"), update);
    EXPECT_EQ(at("00110"), kRunTestIdle);
    EXPECT_EQ(at("00111"), kSelectDrScan);
  };
  check_scan("1", kCaptureDr, kShiftDr, kExit1Dr, kPauseDr, kExit2Dr, kUpdateDr);
  check_scan("11", kCaptureIr, kShiftIr, kExit1Ir, kPauseIr, kExit2Ir, kUpdateIr);
  EXPECT_EQ(Walk(kRunTestIdle, "111"), kTestLogicReset);
}

/// A chip with a 4-bit instruction, a plain register of 12 bits and, at instruction 9, a long one.
class Probe : public JtagChip {
 public:
  explicit Probe(const Clock& clock)
      : JtagChip(clock, kJtagWiring, {.length = 4, .at_reset = 6, .capture = 0x1}) {}

  std::vector<std::uint64_t> updates;
  std::vector<std::uint8_t> bytes;
  using JtagChip::instruction;

  std::vector<MemoryArea> Memory() override { return {}; }
  void Break(const StuckBit& /*stuck*/) override {}

 private:
  void Restart() override {}
  DataRegister CaptureDr() override {
    if (instruction() == 9) return {.bits = 0xA5, .length = 8, .streams = true};
    return {.bits = 0xC35, .length = 12};
  }
  void UpdateDr(std::uint64_t bits) override { updates.push_back(bits); }
  std::uint8_t TakeByte(std::uint8_t byte) override {
    bytes.push_back(byte);
    return static_cast<std::uint8_t>(bytes.size());
  }
};

/// A programmer's shifter on a chip.
class JtagLinesOfAChip : public testing::Test {
 protected:
  static constexpr ShifterConfig kBytes{0, 8, 0x10, 0xA0, 0x02, 0x01, 0, 6, 8, 0, 0xA0, 0x04};

  JtagLinesOfAChip() {
    socket.SetSupply(5000);
    wires.Write(1, 0x02);
    wires.Write(0, 0xA0);
    shifter.OutHighFirst(kBytes, 0);  // into Run-Test/Idle
  }

  void EnterShiftIr() {
    Pulse(true);
    shifter.Walk(kBytes, 1);
    Pulse(false);
  }
  void Pulse(bool tms) {
    const std::uint8_t low = tms ? 0xA4 : 0xA0;
    wires.Write(0, low);
    wires.Write(0, low | 0x10);
    wires.Write(0, low);
  }
  [[nodiscard]] bool tdo_driven() const { return chip.driven() == kJtagWiring.tdo; }

  Clock clock;
  Probe chip{clock};
  Socket socket{&chip, {.vcc = {}, .gnd = {}}};
  Wires wires{clock, socket};
  Shifter shifter{wires};
};

TEST_F(JtagLinesOfAChip, DataScanGoesOutLowBitFirstAndComesBack) {
  EXPECT_EQ(chip.instruction(), 6U);
  shifter.Walk(kBytes, 2);
  EXPECT_TRUE(tdo_driven());
  EXPECT_EQ(shifter.In(kBytes), 0xAC);  // 0x35, bit 0 first
  shifter.OutLast(kBytes, 0x50, 4);     // 0xA, bit 0 first
  EXPECT_FALSE(tdo_driven()) << "beyond Shift-DR";
  shifter.Walk(kBytes, 1);
  EXPECT_EQ(chip.updates, std::vector<std::uint64_t>{0xA00});
}

TEST_F(JtagLinesOfAChip, EveryLastGroupLeavesTheShiftState) {
  const struct {
    std::uint8_t value;
    int bits;
    std::uint64_t update;
  } groups[] = {{0x80, 1, 0xE1A}, {0x40, 2, 0xB0D}, {0x41, 8, 0x82C}};
  for (const auto& group : groups) {
    shifter.Walk(kBytes, 2);
    shifter.OutLast(kBytes, group.value, group.bits);
    EXPECT_FALSE(tdo_driven()) << group.bits;
    shifter.Walk(kBytes, 1);
    EXPECT_EQ(chip.updates.back(), group.update) << group.bits;
  }
}

TEST_F(JtagLinesOfAChip, InstructionScanAndLongRegister) {
  EnterShiftIr();
  shifter.OutLast(kBytes, 0x90, 4);
  shifter.Walk(kBytes, 1);
  ASSERT_EQ(chip.instruction(), 9U);

  shifter.Walk(kBytes, 2);
  EXPECT_EQ(shifter.In(kBytes), 0xA5);
  shifter.OutHighFirst(kBytes, 0xC0);
  EXPECT_EQ(shifter.In(kBytes), 0x40) << "what TakeByte gave, bit 0 first";
  shifter.OutLast(kBytes, 0x81, 8);
  EXPECT_EQ(chip.bytes, (std::vector<std::uint8_t>{0x00, 0x03, 0x00, 0x81}))
      << "the clock that leaves Shift-DR shifts, too";

  for (int i = 0; i < 5; ++i) Pulse(true);
  EXPECT_EQ(chip.instruction(), 6U) << "Test-Logic-Reset";
}

TEST_F(JtagLinesOfAChip, OutputChangesAtTheFallingEdgeOnly) {
  shifter.Walk(kBytes, 2);
  ASSERT_TRUE(wires.Sample(0, 0x02));
  wires.Write(0, 0xB0);
  EXPECT_TRUE(wires.Sample(0, 0x02));
  wires.Write(0, 0xA0);
  EXPECT_FALSE(wires.Sample(0, 0x02));
}

TEST_F(JtagLinesOfAChip, NothingPassesAClosedBuffer) {
  shifter.Walk(kBytes, 2);
  wires.Write(0, 0x80);
  EXPECT_FALSE(tdo_driven());
  ShifterConfig closed = kBytes;
  closed.fixed = 0x80;
  shifter.OutLast(closed, 0xFF, 8);
  shifter.Walk(closed, 1);
  EXPECT_TRUE(chip.updates.empty());
}

}  // namespace
}  // namespace fliglaf::simulator
