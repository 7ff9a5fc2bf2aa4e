#include "usb/request/bulk_read.h"

#include <functional>

#include <gtest/gtest.h>

#include "tests/support/test_host.h"
#include "usb/usbmpu4prg.h"

namespace fliglaf {
namespace {

using test::TestHost;

/// A programmer whose transfers the test carries out in its own way, a millisecond after their
/// start.
class ScriptedTransfer : public ForwardingProgrammer, public platform::TimeSource {
 public:
  using ForwardingProgrammer::ForwardingProgrammer;
  std::function<void(std::span<std::uint8_t>, std::uint8_t&)> transfer;
  std::size_t asked = 0;

  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override {
    asked = destination.size();
    next_ = now_ + 1'000'000;
    deliver_ = [this, destination, &status] { transfer(destination, status); };
  }
  [[nodiscard]] std::int64_t Now() const override { return now_; }
  [[nodiscard]] std::optional<std::int64_t> NextEvent() const override { return next_; }
  void WaitUntil(std::int64_t time) override {
    now_ = time;
    if (next_ && now_ >= *next_) {
      // The end mark is there with the data: the turn that waits for it has news at once.
      next_ = deliver_ ? std::optional(now_) : std::nullopt;
      if (deliver_) std::exchange(deliver_, nullptr)();
    }
  }

 private:
  std::int64_t now_ = 0;
  std::optional<std::int64_t> next_;
  std::function<void()> deliver_;
};

class BulkReadTest : public testing::Test {
 protected:
  BulkReadTest() {
    host_.vars.quorinprgresult[0] = 0;
    programmer_.transfer = [](std::span<std::uint8_t> bytes, std::uint8_t& status) {
      std::ranges::fill(bytes, std::uint8_t{0x33});
      bytes.back() = kEndMark;
      status = 2;
    };
  }

  TestHost host_;
  ScriptedTransfer programmer_{host_.tap};
  platform::PortableDesktop desktop_{programmer_};
  platform::Form form_;
  platform::Timer timer_{desktop_, "Timer2", [this] {
                           timer_.Disable();
                           host_.vars.quorinprgresult[0] = result::kTimeOut;
                         }};
  fliglaf::Run run_{host_.vars, programmer_, desktop_, form_, timer_};
};

TEST_F(BulkReadTest, IntoTheDataBufferPutsTheSavedByteBack) {
  host_.vars.quorinibuffer[15] = 0x77;
  EXPECT_EQ(BulkRead(run_, 0, 10, 6), 0);
  EXPECT_EQ(programmer_.asked, 6U);
  EXPECT_EQ(host_.vars.quorinibuf1[0], 0x77);
  EXPECT_EQ(host_.vars.quorinibuffer[14], 0x33);
  EXPECT_EQ(host_.vars.quorinibuffer[15], 0x77);
  EXPECT_FALSE(timer_.enabled());

  programmer_.transfer = [](std::span<std::uint8_t>, std::uint8_t& status) { status = 4; };
  EXPECT_EQ(BulkRead(run_, 0, 10, 6), 1);
  EXPECT_EQ(host_.vars.quorinibuffer[15], 0) << "a failed read leaves the end-mark byte";
  EXPECT_EQ(host_.vars.quorinprgresult[0], 0);
  EXPECT_FALSE(timer_.enabled());
}

TEST_F(BulkReadTest, ModeFiveAsksForOnePacketWhateverTheCount) {
  EXPECT_EQ(BulkRead(run_, 5, 99, 4000), 0);
  EXPECT_EQ(programmer_.asked, 65U);
  EXPECT_EQ(host_.vars.quorinibuf2[63], 0x33);
  EXPECT_EQ(host_.vars.quorinibuf2[64], 0) << "the end mark is taken away";
  EXPECT_EQ(BulkRead(run_, 1, 99, 300), 0);
  EXPECT_EQ(programmer_.asked, 300U);
}

TEST_F(BulkReadTest, DataWithoutEndMarkTimeOutAfterFiveSeconds) {
  programmer_.transfer = [](std::span<std::uint8_t>, std::uint8_t& status) { status = 2; };
  const std::int64_t before = programmer_.Now();
  EXPECT_EQ(BulkRead(run_, 1, 0, 65), 1);
  EXPECT_EQ(programmer_.Now() - before, 5'000'000'000);
  EXPECT_EQ(host_.vars.quorinprgresult[0], 0);
}

TEST_F(BulkReadTest, ADeadTransferIsGivenUpWhateverTheHostWritesIntoTheResult) {
  programmer_.transfer = [](std::span<std::uint8_t>, std::uint8_t&) {};
  platform::Timer host_timer(desktop_, "host", [this] { host_.vars.quorinprgresult[0] = 0; });
  int turns = 0;
  desktop_.on_turn = [&] {
    if (++turns == 1) host_timer.Enable(5000);  // ticks in the watchdog's turn, after it
    if (turns == 1000) throw std::runtime_error("still waiting");
    return false;
  };
  EXPECT_EQ(BulkRead(run_, 1, 0, 65), 1);
}

TEST_F(BulkReadTest, StopEndsTheWaitAtOnceAndStays) {
  desktop_.on_turn = [&] {
    host_.vars.quorinprgresult[0] = 2;
    return true;
  };
  EXPECT_EQ(BulkRead(run_, 1, 0, 65), 1) << "also when the data are there already";
  EXPECT_EQ(host_.vars.quorinprgresult[0], 2);
}

TEST_F(BulkReadTest, RangesOutsideTheTargetAreRefusedBeforeAnythingIsSent) {
  EXPECT_THROW(static_cast<void>(BulkRead(run_, 1, 0, 33001)), RangeError);
  EXPECT_THROW(static_cast<void>(BulkRead(run_, 0, 4290, 10)), RangeError);
  EXPECT_THROW(static_cast<void>(BulkRead(run_, 0, -1, 10)), RangeError);
  EXPECT_EQ(programmer_.asked, 0U);
}

}  // namespace
}  // namespace fliglaf
