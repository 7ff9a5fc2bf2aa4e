// What is seen at the socket: the dump's text, and set-up and hold of the lines at every clock
// edge.
#include "simulator/waveform.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "simulator/wires.h"
#include "tests/support/test_host.h"

namespace fliglaf::simulator {
namespace {

/// A chip on two lines: it puts the clock's level inverted on the data line.
class TwoLineChip : public Chip {
 public:
  void Power(bool /*on*/) override {}
  void Observe(Lines levels) override {
    driven_ = kData;
    levels_ = (levels & kClock) != 0 ? 0 : kData;
  }
  [[nodiscard]] std::vector<Signal> Signals() const override {
    return {{"clk", kClock}, {"data", kData}};
  }
  std::vector<MemoryArea> Memory() override { return {}; }
  void Break(const StuckBit& /*stuck*/) override {}

 private:
  static constexpr Lines kClock = LinesOf(2, 0x20);
  static constexpr Lines kData = LinesOf(2, 0x80);
};

struct DumpOfTwoLines : testing::Test {
  std::string text;
  Clock clock;
  TwoLineChip chip;
  Socket socket{&chip, {.vcc = {40}, .gnd = {20}}};
  Wires wires{clock, socket};
  Waveform dump{clock, chip.Signals(), "a chip", [this](std::string_view piece) { text += piece; }};

  DumpOfTwoLines() {
    wires.Watch(dump);
    clock.Advance(500);
  }

  /// Ends it; the text from the first time stamp on.
  [[nodiscard]] std::string Changes() {
    dump.End();
    std::string changes = text.substr(text.find('#'));
    std::ranges::replace(changes, '\n', ' ');
    return changes;
  }
};

TEST_F(DumpOfTwoLines, HasOneBitWiresNamedByRole) {
  EXPECT_EQ(Changes(), "#0 0a 0b 0c 0d #5 ");
  EXPECT_EQ(text.substr(0, text.find('#')),
            "$version fliglaf $end\n$comment a chip $end\n$timescale 100 ns $end\n"
            "$scope module socket $end\n$var wire 1 a clk $end\n$var wire 1 b data $end\n"
            "$var wire 1 c vcc $end\n$var wire 1 d vpp $end\n$upscope $end\n"
            "$enddefinitions $end\n");
}

TEST_F(DumpOfTwoLines, TellsWhoDrivesALineAsTheProgrammerReadsIt) {
  wires.Write(2, 0xA0);
  wires.Write(3, 0x80);  // releases the data line; an unpowered chip does not drive it
  socket.SetSupply(2500);
  socket.SetGndPin(20, true);
  socket.SetVccPin(40, true);
  clock.Advance(1000);
  socket.SetVppPin(1, true);
  socket.SetSupply(5000);
  wires.Write(2, 0x00);
  wires.Write(0, 0xFF);  // no line of the chip
  clock.Advance(1000);
  socket.AllOff();
  EXPECT_EQ(Changes(), "#0 0a 0b 0c 0d #5 1a 1b #7 0b #9 1c #19 1d 0a 1b #33 0b 0c 0d #34 ");
}

TEST_F(DumpOfTwoLines, ShowsABrokenAnswer) {
  socket.StickAnswer(true);
  wires.Write(3, 0x80);
  wires.Write(2, 0x20);
  EXPECT_EQ(Changes(), "#0 0a 0b 0c 0d #5 1b #7 1a #9 ");
}

TEST_F(DumpOfTwoLines, ShowsTheAnswerWhereAnAdapterJoinsTheInput) {
  socket.JoinInput(LinesOf(2, 0x80));
  wires.Write(2, 0x80);  // the programmer drives the data line, and reads a chip without power
  EXPECT_FALSE(wires.Sample(2, 0x80));
  socket.SetSupply(5000);
  socket.SetGndPin(20, true);
  socket.SetVccPin(40, true);
  EXPECT_TRUE(wires.Sample(2, 0x80));
  wires.Write(2, 0xA0);
  EXPECT_FALSE(wires.Sample(2, 0x80));
  EXPECT_EQ(Changes(), "#0 0a 0b 0c 0d #7 1b 1c 1a 0b #9 ");
}

/// Measures, at the rising edges of a powered chip's clock, how long all other lines stand still.
class EdgeTimes : public SocketWatch {
 public:
  EdgeTimes(const Clock& clock, const std::vector<Signal>& signals) : clock_(clock) {
    for (const Signal& signal : signals) {
      const bool is_clock = signal.role == "tck" || signal.role == "sck";
      (is_clock ? clock_line_ : others_) |= signal.line;
    }
  }

  std::int64_t edges = 0;
  std::int64_t least_set_up = Clock::kMillisecond;
  std::int64_t least_hold = Clock::kMillisecond;

  void Show(Lines levels) override {
    const Lines changed = levels ^ levels_;
    levels_ = levels;
    if ((levels & kVcc) == 0) return;
    if ((changed & others_) != 0) {
      changed_at_ = clock_.now();
      if (edges > 0) least_hold = std::min(least_hold, changed_at_ - rose_at_);
    }
    if ((changed & clock_line_) != 0 && (levels & clock_line_) != 0) {
      rose_at_ = clock_.now();
      ++edges;
      least_set_up = std::min(least_set_up, rose_at_ - changed_at_);
    }
  }

 private:
  const Clock& clock_;
  Lines clock_line_ = 0;
  Lines others_ = 0;
  Lines levels_ = 0;
  std::int64_t changed_at_ = 0;
  std::int64_t rose_at_ = 0;
};

TEST(Waveform, DataStandStillAroundTheSamplingEdge) {
  for (const char* name : {"isp51-4k", "isp51ee-8k", "isp-word-1k", "jtag-byte-16k",
                           "jtag-page2-32k", "jtag-flash-16k", "isp-page-8k", "isp-frame-2k"}) {
    test::TestHost host(name);
    EdgeTimes times(host.bench.clock(), host.bench.chip().Signals());
    host.bench.Watch(times);
    host.Run(std::uint8_t{2});
    EXPECT_GT(times.edges, 1000) << name;
    EXPECT_GE(times.least_set_up, 200) << name;
    EXPECT_GE(times.least_hold, 200) << name;
  }
}

}  // namespace
}  // namespace fliglaf::simulator
