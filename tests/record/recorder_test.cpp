#include "record/recorder.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/cls_mpu.h"
#include "platform/portable/portable_desktop.h"
#include "replay/player.h"
#include "usb/request/engine_run.h"

namespace fliglaf::record {
namespace {

using ::testing::HasSubstr;

class Clock : public platform::TimeSource {
 public:
  [[nodiscard]] std::int64_t Now() const override { return now; }
  [[nodiscard]] std::optional<std::int64_t> NextEvent() const override { return now + kTurn; }
  void WaitUntil(std::int64_t time) override { now = time; }

  static constexpr std::int64_t kTurn = 10'000'000;  // ns
  std::int64_t now = 0;
};

/// A programmer with a device that answers the programming enable. A bulk read brings its status
/// and its end mark some turns of the message loop later.
class Bench : public FunnelProgrammer {
 public:
  explicit Bench(SharedVariables& variables) : vars(variables) {}

  SharedVariables& vars;
  Clock clock;
  /// Called for every operation on numbers; its result is that of the operation.
  std::function<std::int32_t(Op, const Arguments&)> on_call;
  int turns_to_status = 2;
  int turns_to_end_mark = 4;
  std::uint8_t last_status = bulk_status::kDone;

  void usbcomwrite(std::span<const std::uint8_t>) override {}
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override {
    if (destination.size() < 3) throw ComponentError("qdnio.dll is missing");
    destination_ = destination;
    status_ = &status;
    turns_ = 0;
  }
  [[nodiscard]] std::u16string datstr(std::int32_t, std::int32_t) override { return u"69"; }

  void Turn() {
    ++turns_;
    if (turns_ == turns_to_status && status_ != nullptr) {
      *status_ = last_status;
      for (std::size_t i = 0; i < 4; ++i) destination_[i] = static_cast<std::uint8_t>(0xA0 + i);
    }
    if (turns_ == turns_to_end_mark && status_ != nullptr) destination_.back() = kEndMark;
  }

 protected:
  std::int32_t Perform(Op op, const Arguments& arguments) override {
    const std::int32_t result = on_call ? on_call(op, arguments) : 0;
    return op == Op::kReadRegister ? 0x69 : result;
  }

 private:
  std::span<std::uint8_t> destination_;
  std::uint8_t* status_ = nullptr;
  int turns_ = 0;
};

class Recording : public ::testing::Test {
 protected:
  Recording() {
    vars->OpenMainGroup(0, [] {});
    vars->quorinbuflength[0] = 512;
    vars->OpenDataBuffers(vars->DataBufferLength(), [] {});
    vars->quorinprgmode[0] = 1;
    vars->quorinprgresult[1] = 2;
    vars->quorinwltbigendbuf[1] = 255;
    vars->quorintlength[0] = 256;
    vars->quorinMainmnuPrg.Set(2, u"Read \"\u00e9\U0001F600\xD800\"\\\t");
    desktop.on_turn = [this] {
      bench.Turn();
      if (on_turn) on_turn();
      return false;
    };
  }

  /// Records the request that the variables hold.
  std::string Run() {
    std::string out;
    Recorder recorder(bench, desktop, *vars, out);
    {
      Library library(recorder.programmer(), recorder.desktop());
      clsMPU mpu(library);
      std::int16_t instance = 0;
      std::int16_t usb = -1;
      mpu.bufcommpu4(instance);
      recorder.Begin("runMpu4Prg(-1)");
      mpu.runMpu4Prg(usb);
      EXPECT_TRUE(recorder.End()) << recorder.problem();
    }
    return out;
  }

  /// Expects `record` to agree with a run of its own, with the host's variables out of its way.
  void ExpectReplays(const std::string& record) {
    for (std::int32_t i = 0; i < 20; ++i) vars->quorinMainmnuPrg.Set(i, u"");
    vars.reset();
    std::istringstream in(record);
    const Verdict verdict = PlayRecord(in, "record", {});
    EXPECT_GT(verdict.calls, 8U);
    if (!verdict.difference) return;
    ADD_FAILURE() << verdict.difference->line << ": expected " << verdict.difference->expected
                  << ", got " << verdict.difference->actual << "\n"
                  << record;
  }

  /// Writes `value` into the result at turn `turn` of a run.
  void ResultAtTurn(int turn, std::uint8_t value) {
    on_turn = [this, turn, value, count = 0]() mutable {
      if (++count == turn) vars->quorinprgresult[0] = value;
    };
  }

  std::unique_ptr<SharedVariables> vars = std::make_unique<SharedVariables>();
  Bench bench{*vars};
  platform::PortableDesktop desktop{bench.clock, 86'399.99};  // the run goes over midnight
  std::function<void()> on_turn;
};

TEST_F(Recording, ReadReplaysWithWhatTheComponentStored) {
  vars->quorinprgresult[2] = 9;
  bench.on_call = [this](Op op, const Arguments& a) {
    if (op == Op::kBlockTransfer) vars->quorinibuffer[a[1]] = static_cast<std::uint8_t>(a[0]);
    return 0;
  };
  const std::string record = Run();
  EXPECT_THAT(record, HasSubstr("quorinprgresult(1) = 2 9\nquorinwltbigendbuf(1) = 255\n"));
  EXPECT_THAT(record, HasSubstr("\n256 * QueueRegisterWrite(0x01, 0x8F)\nFlushQueue()\n"));
  EXPECT_THAT(record, HasSubstr("\nusbbulkread(quorinibuf2(0), 321) = 2 data A0 A1 A2 A3 end AA\n"
                                "BlockTransfer(0xA0, 0, 0)\nset quorinibuffer(0) = 160\n"));
  EXPECT_THAT(record, HasSubstr("quorinibuffer(0) = 160 161 162 163\n"));
  EXPECT_THAT(record, HasSubstr(">> 0.00Sec\\n\"\n"));
  EXPECT_EQ(vars->quorinMainRtstr[0].find(u"0.00Sec"), std::u16string_view::npos);
  ExpectReplays(record);
}

TEST_F(Recording, VerifyThatFailsReplaysWithItsNotes) {
  vars->quorinprgresult[1] = 3;
  bench.on_call = [this](Op op, const Arguments& a) {
    if (op != Op::kBlockTransfer || a[1] < 2) return 0;
    vars->quorinprgresult[0] = 1;
    vars->quorinMainRtstr.Append(0, u"differs\n");
    vars->quorinMainRtstr.Append(1, u"at 2\n");
    return 1;
  };
  const std::string record = Run();
  EXPECT_THAT(record, HasSubstr("BlockTransfer(0xA2, 2, 1) = 1\nset quorinprgresult(0) = 1\n"
                                "set quorinMainRtstr(0) = \">>"));
  EXPECT_THAT(record, HasSubstr("differs\\n\"\nset quorinMainRtstr(1) = \"at 2\\n\"\nFlushQueue"));
  ExpectReplays(record);
}

TEST_F(Recording, TimeOutsAndFailedTransfersReplay) {
  bench.turns_to_end_mark = 0;  // never
  int transfers = 0;
  bench.on_call = [this, &transfers](Op op, const Arguments&) {
    if (op != Op::kFlushQueue) return 0;
    ++transfers;
    bench.last_status = transfers == 2 ? 4 : bulk_status::kDone;
    if (transfers == 3) bench.turns_to_end_mark = 4;
    return 0;
  };
  const std::string record = Run();
  EXPECT_THAT(record, HasSubstr("= 2 data A0 A1 A2 A3\nevent Timer2\n"));
  EXPECT_THAT(record, HasSubstr("\nusbbulkread(quorinibuf2(0), 321) = 4\n"));
  EXPECT_THAT(record, HasSubstr("= 2 data A0 A1 A2 A3 end AA\n"));
  ExpectReplays(record);
}

TEST_F(Recording, FailedCallReplays) {
  bench.on_call = [](Op op, const Arguments& a) -> std::int32_t {
    if (op == Op::kBlockTransfer && a[1] == 1) throw ComponentError("BlockTransfer", 0x80070005);
    return 0;
  };
  const std::string record = Run();
  EXPECT_THAT(record, HasSubstr("\nBlockTransfer(0xA1, 1, 0) ! 0x80070005\nEndRun()\n"));
  ExpectReplays(record);
}

TEST_F(Recording, ASignalThatFailsAfterTheElapsedTimeReplays) {
  bench.on_call = [](Op op, const Arguments&) -> std::int32_t {
    if (op == Op::kSignalPass) throw ComponentError("SignalPass", 0x80004005);
    return 0;
  };
  const std::string record = Run();
  EXPECT_THAT(record, HasSubstr(">> 0.00Sec\\n>>IoHelper.SignalPass failed"));
  ExpectReplays(record);
}

TEST_F(Recording, EventsKeepTheirTurnAsAReplayCountsIt) {
  std::string out;
  Traffic traffic(*vars, out);
  RecordingProgrammer programmer(bench, traffic);
  RecordingDesktop recorded(desktop, *vars, traffic);
  traffic.Start();
  programmer.DelayMs(1);
  ResultAtTurn(3, 7);
  for (int turn = 0; turn < 3; ++turn) recorded.DoEvents();
  programmer.usbbulkread(vars->quorinibuf2.Range(0, 65), vars->quorinusbpip2readresult[0]);
  ResultAtTurn(6, 9);  // four turns of waiting, which a replay does in two, and two more
  for (int turn = 0; turn < 6; ++turn) recorded.DoEvents();
  programmer.DelayMs(1);
  traffic.Finish();
  EXPECT_EQ(out,
            "DelayMs(1)\n"
            "event quorinprgresult(0) = 0\n"
            "event quorinprgresult(0) = 0\n"
            "event quorinprgresult(0) = 7\n"
            "usbbulkread(quorinibuf2(0), 65) = 2 data A0 A1 A2 A3 end AA\n"
            "event quorinprgresult(0) = 7\n"
            "event quorinprgresult(0) = 7\n"
            "event quorinprgresult(0) = 7\n"
            "event quorinprgresult(0) = 9\n"
            "DelayMs(1)\n");
}

TEST_F(Recording, AMissingTransferLibraryIsToldFromOtherFailures) {
  std::string out;
  Traffic traffic(*vars, out);
  traffic.Start();
  RecordingProgrammer programmer(bench, traffic);
  std::uint8_t& status = vars->quorinusbpip2readresult[0];
  EXPECT_THROW(programmer.usbbulkread(vars->quorinibuf2.Range(7, 2), status), ComponentError);
  EXPECT_EQ(traffic.problem(), "");
  traffic.Finish();
  EXPECT_EQ(out, "usbbulkread(quorinibuf2(7), 2) ! 0x8007007E\n");
  EXPECT_STREQ(Failure(Row(Op::kUsbBulkRead), 0x8007007E).what(), "qdnio.dll is missing");

  traffic.Start();
  bench.on_call = [](Op, const Arguments&) -> std::int32_t {
    throw ComponentError("IoHelper is missing");
  };
  EXPECT_THROW(programmer.EndRun(), ComponentError);
  EXPECT_EQ(traffic.problem(),
            "EndRun failed in a way that a record cannot hold: IoHelper is missing");
  traffic.Finish();
}

TEST_F(Recording, MessageBoxesReplayWithTheirAnswers) {
  vars->quorinchipidtestmode[0] = -1;
  vars->quorincompid[0] = 0x1E;
  vars->quorinprgresult[1] = 0;
  vars->quorinwautonum[0] = 2;
  vars->quorinautoprg[0] = vars->quorinautoprg[1] = 4;
  // Again, then go on with a device of another signature; twice OK after a failed blank check.
  const std::array answers{platform::box_answer::kRetry, platform::box_answer::kIgnore,
                           platform::box_answer::kOk, platform::box_answer::kOk};
  std::size_t boxes = 0;
  desktop.on_box = [&answers, &boxes](int, std::u16string_view, std::u16string_view) {
    return answers.at(boxes++);
  };
  bench.on_call = [this](Op op, const Arguments&) {
    if (op == Op::kBlockTransfer) vars->quorinprgresult[0] = 1;
    return op == Op::kBlockTransfer ? 1 : 0;
  };
  const std::string record = Run();
  EXPECT_EQ(boxes, answers.size());
  EXPECT_THAT(record,
              HasSubstr("MsgBox(50, \"Warning! Device Code Error!\", \"69   6969\") = 4\n"));
  EXPECT_THAT(record, HasSubstr("MsgBox(33, \"\", \"\") = 1\n"));
  ExpectReplays(record);
}

}  // namespace
}  // namespace fliglaf::record
