// Runs whose bulk reads are given up, since the user stops the run or a transfer comes late: their
// records hold what such a transfer brought in the end, so they replay. FLIGLAF_EXTENDED=1 in the
// environment interrupts every operation, and in more places.
#include <cstdlib>
#include <sstream>

#include <gtest/gtest.h>

#include "record/recorder.h"
#include "replay/player.h"
#include "simulator/faulty_programmer.h"
#include "tests/support/small_devices.h"

namespace fliglaf::record {
namespace {

constexpr std::uint8_t kProgram = 6;

/// A turn of the message loop and a bulk read; counted from 1, 0 for none.
struct Place {
  std::size_t turn = 0;
  std::size_t transfer = 0;
};

class LateTransfer : public simulator::FaultyProgrammer {
 public:
  using FaultyProgrammer::FaultyProgrammer;
  Place reached;
  /// Where the user presses Stop, and which bulk read is late.
  Place interrupted;

 protected:
  Choice Choose(Op op) override {
    if (op != Op::kUsbBulkRead || ++reached.transfer != interrupted.transfer) return {};
    // About the 5 s after which the watchdog fires, and later.
    const std::size_t ms = 4996 + interrupted.transfer * 37 % 500;
    return {simulator::Fault::kLateTransfer, static_cast<std::uint32_t>(ms)};
  }
};

class RecordedBench {
 public:
  explicit RecordedBench(const test::SmallDevice& small) : host_(small.device) {
    test::Prepare(host_, small);
    desktop_.on_turn = [this] {
      const bool stop = ++programmer_.reached.turn == programmer_.interrupted.turn;
      if (stop) host_.vars.quorinprgresult[0] = 2;
      return stop;
    };
  }

  /// Runs an operation and replays its record. Returns where it came to.
  Place Run(std::uint8_t code, const Place& interrupted) {
    programmer_.reached = {};
    programmer_.interrupted = interrupted;
    host_.vars.quorinprgresult[1] = code;
    std::string text;
    Recorder recorder(programmer_, desktop_, host_.vars, text);
    Library library(recorder.programmer(), recorder.desktop());
    clsMPU object(library);
    std::int16_t instance = 7, usb = -1;
    object.bufcommpu4(instance);
    recorder.Begin("runMpu4Prg(-1)");
    object.runMpu4Prg(usb);
    EXPECT_TRUE(recorder.End()) << recorder.problem();
    std::istringstream record(text);
    const auto difference = PlayRecord(record, "record", {}).difference.value_or(Difference{});
    EXPECT_EQ(difference.expected, difference.actual)
        << "operation " << int{code} << ", stopped at turn " << interrupted.turn
        << ", late transfer " << interrupted.transfer << ", line " << difference.line;
    return programmer_.reached;
  }

 private:
  test::TestHost host_;
  LateTransfer programmer_{host_.bench.programmer(), host_.bench};
  platform::PortableDesktop desktop_{programmer_};
};

void Interrupt(RecordedBench& bench, std::uint8_t code, std::size_t places) {
  const Place end = bench.Run(code, {});
  for (std::size_t turn = 1; turn <= end.turn; turn += end.turn / places + 1) {
    bench.Run(code, {.turn = turn});
  }
  for (std::size_t nth = 1; nth <= end.transfer; nth += end.transfer / places + 1) {
    bench.Run(code, {.transfer = nth});
  }
}

TEST(InterruptedRuns, Replay) {
  const bool extended = std::getenv("FLIGLAF_EXTENDED") != nullptr;
  for (const test::SmallDevice& device : test::SmallDevices()) {
    const bool slow = device.name.ends_with("Block");
    if (device.parallel || (slow && !extended)) continue;
    SCOPED_TRACE(device.name);
    RecordedBench bench(device);
    for (const std::uint8_t code : device.codes) {
      if (code == kProgram || (extended && !slow)) Interrupt(bench, code, extended ? 20 : 4);
    }
  }
}

}  // namespace
}  // namespace fliglaf::record
