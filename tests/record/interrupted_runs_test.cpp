// Runs whose bulk reads are given up, since the user stops the run or a transfer comes late: their
// records hold what such a transfer brought in the end, so they replay. FLIGLAF_EXTENDED=1 in the
// environment interrupts every operation, and in more places.
#include <cstdlib>
#include <sstream>

#include <gtest/gtest.h>

#include "record/player.h"
#include "record/recorder.h"
#include "simulator/faulty_programmer.h"
#include "tests/support/small_devices.h"

namespace fliglaf::record {
namespace {

using simulator::Fault;

constexpr std::uint8_t kRead = 2;

/// The turn of the message loop in which the user presses Stop, and the bulk read that comes late;
/// both from 1, 0 for none.
struct Interruption {
  std::size_t stop = 0;
  std::size_t late = 0;
};

class LateTransfers : public simulator::FaultyProgrammer {
 public:
  using FaultyProgrammer::FaultyProgrammer;
  Interruption interruption;
  std::size_t turns = 0;
  std::size_t transfers = 0;

 protected:
  Choice Choose(std::string_view operation) override {
    if (operation != "usbbulkread" || ++transfers != interruption.late) return {};
    // About the 5 s after which the watchdog fires, and later.
    return {Fault::kLateTransfer, static_cast<std::uint32_t>(4996 + interruption.late * 37 % 500)};
  }
};

class RecordedBench {
 public:
  explicit RecordedBench(const test::SmallDevice& small) : host_(small.device) {
    test::Prepare(host_, small);
    desktop_.on_turn = [this] {
      const bool stop = ++programmer_.turns == programmer_.interruption.stop;
      if (stop) host_.vars.quorinprgresult[0] = 2;
      return stop;
    };
  }

  void ExpectReplays(std::uint8_t code, const Interruption& interruption) {
    SCOPED_TRACE(testing::Message() << "operation " << int{code} << ", stopped at turn "
                                    << interruption.stop << ", late " << interruption.late);
    std::istringstream record(Run(code, interruption));
    const Verdict verdict = PlayRecord(record, "record", {});
    if (verdict.difference) {
      ADD_FAILURE() << "line " << verdict.difference->line << ": expected "
                    << verdict.difference->expected << ", got " << verdict.difference->actual;
    }
  }

  /// Returns the record of a request.
  std::string Run(std::uint8_t code, const Interruption& interruption) {
    programmer_.interruption = interruption;
    programmer_.turns = programmer_.transfers = 0;
    host_.vars.quorinprgresult[1] = code;
    std::string text;
    Recorder recorder(programmer_, desktop_, host_.vars, text);
    Library library(recorder.programmer(), recorder.desktop());
    clsMPU object(library);
    std::int16_t instance = 7;
    std::int16_t usb = -1;
    object.bufcommpu4(instance);
    recorder.Begin("runMpu4Prg(-1)");
    object.runMpu4Prg(usb);
    EXPECT_TRUE(recorder.End()) << recorder.problem();
    return text;
  }

  [[nodiscard]] std::size_t turns() const { return programmer_.turns; }
  [[nodiscard]] std::size_t transfers() const { return programmer_.transfers; }

 private:
  test::TestHost host_;
  LateTransfers programmer_{host_.bench.programmer(), host_.bench};
  platform::PortableDesktop desktop_{programmer_};
};

void Interrupt(RecordedBench& bench, std::uint8_t code, std::size_t places) {
  static_cast<void>(bench.Run(code, {}));
  const std::size_t turns = bench.turns();
  const std::size_t transfers = bench.transfers();
  for (std::size_t turn = turns; turn > 0; turn -= std::min(turn, (turns + places - 1) / places)) {
    bench.ExpectReplays(code, {.stop = turn});
  }
  for (std::size_t nth = transfers; nth > 0;
       nth -= std::min(nth, (transfers + places - 1) / places)) {
    bench.ExpectReplays(code, {.late = nth});
  }
}

TEST(InterruptedRuns, Replay) {
  const char* const set = std::getenv("FLIGLAF_EXTENDED");
  const bool extended = set != nullptr && *set != '\0';
  for (const test::SmallDevice& device : test::SmallDevices()) {
    // Reading a whole block takes seconds.
    const bool large = device.name.ends_with("Block");
    if (device.parallel || (large && !extended)) continue;
    SCOPED_TRACE(device.name);
    RecordedBench bench(device);
    for (const std::uint8_t code : device.codes) {
      const bool everywhere = extended && !large;
      if (code == kRead || everywhere) Interrupt(bench, code, everywhere ? 20 : 3);
    }
  }
}

}  // namespace
}  // namespace fliglaf::record
