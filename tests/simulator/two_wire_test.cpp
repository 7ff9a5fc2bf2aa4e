// Families 12 and 16: every way to wire them, blocks, locks, and each status that a command can
// answer.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::RandomBytes;
using test::Tap;
using test::TestHost;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRead = 2, kVerify = 3, kProgram = 6, kErase = 8, kLock = 9;
constexpr std::int16_t kPage = 512;

DeviceProfile Device(std::uint8_t family, std::uint8_t option, std::int32_t flash,
                     std::int16_t page = kPage) {
  const std::string_view name = family == 16 ? "two-wire-16k-reset" : "two-wire-8k";
  DeviceProfile device = test::Sized(name, flash + page);
  device.option = option;
  device.page = page;
  device.vpp_pins = {1};
  device.retries = 10;
  return device;
}

/// All but the lock byte and the page above it.
Bytes MainArray(TestHost& host) {
  Bytes bytes = host.image();
  bytes.resize(bytes.size() - static_cast<std::size_t>(host.vars.quorinpagelength[0]) - 1);
  return bytes;
}

void SetRandomImage(TestHost& host, unsigned seed) {
  Bytes image = RandomBytes(static_cast<std::size_t>(host.vars.quorinbuflength[0]), seed);
  image[MainArray(host).size()] = 0xFF;
  host.SetImage(image);
  host.vars.quorinwltbigendbuf[1] = static_cast<std::int32_t>(MainArray(host).size());
}

std::uint64_t Conflicts(TestHost& host) { return host.bench.chip().conflicts(); }

TEST(TwoWire, ARangeThatStartsLaterIsHandedOnFromThere) {
  TestHost host(Device(12, 16, 20480));
  SetRandomImage(host, 13);
  ASSERT_EQ(host.Run(kProgram), 0) << host.log();
  const Bytes main = MainArray(host);
  host.vars.quorinwltbigendbuf[0] = 0x4100;
  Bytes image(main.size());
  host.SetImage(image);
  ASSERT_EQ(host.Run(kRead), 0) << host.log();
  EXPECT_EQ(Conflicts(host), 0U);
  std::copy(main.begin(), main.begin() + 0x4000, image.begin());
  std::copy(main.begin() + 0x4100, main.end(), image.begin() + 0x4100);
  EXPECT_EQ(MainArray(host), image);
}

TEST(TwoWire, OddPagesAreReadInRoundedAndWrittenInWholeHalves) {
  for (const std::int16_t page : {std::int16_t{1}, std::int16_t{3}, std::int16_t{7}}) {
    TestHost host(Device(12, 16, 84, page));
    SetRandomImage(host, 14);
    EXPECT_EQ(host.Run(kProgram), 0) << page << host.log();
  }
}

TEST(TwoWire, WhatNoPassCouldReadIsRefusedBeforeAnythingIsDone) {
  for (const auto& [page, last] : {std::pair{0, 83}, std::pair{-4, 83}, std::pair{4, 0x10000}}) {
    TestHost host(Device(12, 16, 84, 4));
    std::ranges::fill(host.cells("flash"), std::uint8_t{0x5A});
    host.vars.quorinpagelength[0] = static_cast<std::int16_t>(page);
    host.vars.quorinwltbigendbuf[1] = last;
    for (const std::uint8_t code : {kRead, kProgram, kErase}) {
      EXPECT_EQ(host.Run(code), 1) << page << ", " << last;
      EXPECT_THAT(host.log(), HasSubstr(page < 1 ? "must be 1 or more" : "out of range"));
    }
    EXPECT_THAT(host.flash(), testing::Each(0x5A)) << "neither written nor erased";
  }
}

TEST(TwoWire, LockByteLocksFromTheNextRestartOn) {
  TestHost host(Device(12, 16, 4096));
  SetRandomImage(host, 15);
  ASSERT_EQ(host.Run({kErase, kProgram}), 0) << host.log();
  const std::size_t lock = MainArray(host).size();
  host.vars.quorinibuffer[static_cast<std::int64_t>(lock)] = 0xFD;  // two pages
  ASSERT_EQ(host.Run(kLock), 0);
  EXPECT_EQ(host.cells("lock")[0], 0xFD);
  EXPECT_EQ(host.Run(kVerify), 1);
  host.vars.quorinibuffer[static_cast<std::int64_t>(lock)] = 0;
  host.Run(kRead);
  EXPECT_EQ(host.image()[lock], 0xFD) << "behind the locked pages";
  SetRandomImage(host, 19);
  EXPECT_EQ(host.Run(kProgram), 1);
  EXPECT_EQ(host.Run({kErase, kProgram}), 0) << host.log();
}

struct Wiring {
  std::uint8_t family, option;
};

TEST(TwoWire, OnlyItsOwnAssignmentReachesAChip) {
  std::vector<Wiring> wirings{{16, 16}};
  for (std::uint8_t option = 12; option <= 31; ++option) wirings.push_back({12, option});
  const auto lines = [](const Wiring& wiring) {
    if (wiring.family == 16) return 0;
    return wiring.option == 21 ? 15 : wiring.option == 20 ? 19 : int{wiring.option};
  };
  for (const Wiring& chip : wirings) {
    for (const Wiring& used : wirings) {
      TestHost host(Device(chip.family, chip.option, 24, 8));
      host.vars.quorinprgmode[0] = used.family;
      host.vars.quorinwoption[0] = used.option;
      host.vars.quorinwretry[0] = 0;
      SetRandomImage(host, 16);
      EXPECT_EQ(host.Run(kProgram), lines(chip) == lines(used) ? 0 : 1)
          << int{chip.option} << " by " << int{used.option};
    }
  }
}

/// A host whose bench goes wrong in one place.
class TwoWireFaults : public testing::Test {
 protected:
  TwoWireFaults() { SetRandomImage(host, 17); }

  /// Sends `wrong` in the place of each `value` that goes out as a byte at once.
  void Replace(std::int32_t value, std::int32_t wrong) {
    host.tap.before = [this, value, wrong](const Tap::Call& call) {
      if (call.operation != "WriteRegister" || call.target != reg::kFrameByte ||
          call.value != value) {
        return true;
      }
      host.bench.programmer().WriteRegister(wrong, reg::kFrameByte);
      return false;
    };
  }
  [[nodiscard]] std::size_t Bytes(std::int32_t value) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(host.tap.calls, [value](const Tap::Call& call) {
          return call.target == reg::kFrameByte && call.value == value;
        }));
  }

  TestHost host{Device(12, 16, 2048)};
};

TEST_F(TwoWireFaults, RefusedCommandsSendNothingMore) {
  host.tap.before = [this](const Tap::Call& call) {
    if (call.operation != "QueueDelay" || call.value != 20'000) return true;
    host.bench.programmer().QueueDelay(15'000);  // not enabled yet
    return false;
  };
  EXPECT_EQ(host.Run(kProgram), 1);
  EXPECT_EQ(host.tap.Count("ShortDelay"), 0U) << "no operands";
  host.tap.calls.clear();
  EXPECT_EQ(host.Run(kErase), 1);
  EXPECT_EQ(Bytes(0xDE), 0U) << "no key";
}

TEST_F(TwoWireFaults, RefusedOperandsAreSentAgainWhenReading) {
  ASSERT_EQ(host.Run(kErase), 0) << host.log();
  host.cells("lock")[0] = 0x00;
  host.vars.quorinwretry[0] = 2;
  host.vars.quorinpagelength[0] = 2048;
  host.vars.quorintlength[0] = 4096;
  host.tap.calls.clear();
  EXPECT_EQ(host.Run(kVerify), 1);
  EXPECT_EQ(Bytes(6), 2U * 3U) << "two chunks";
  EXPECT_EQ(host.tap.Count("usbbulkread"), 1U);
}

TEST_F(TwoWireFaults, WrongKeyIsTold) {
  std::vector<std::string> boxes;
  host.desktop.on_box = [&boxes](int style, std::u16string_view title, std::u16string_view prompt) {
    boxes.push_back(std::to_string(style) + test::Narrow(title) + ": " + test::Narrow(prompt));
    return 1;
  };
  Replace(0xAD, 0xAE);
  host.Run(kErase);
  EXPECT_EQ(boxes, std::vector<std::string>{"0Test Mode: Device Erase Error"});
  host.tap.before = nullptr;
  host.Run(kErase);
  EXPECT_EQ(boxes.size(), 1U);
}

TEST_F(TwoWireFaults, AnEraseLongerThanThePollsIsTold) {
  DeviceProfile slow = Device(12, 16, 2048);
  slow.chip.erase_ms = 2000;
  for (const std::int16_t retries : {std::int16_t{0}, std::int16_t{3}}) {
    TestHost busy(slow);
    busy.vars.quorinwretry[0] = retries;
    int boxes = 0;
    busy.desktop.on_box = [&boxes](int, std::u16string_view, std::u16string_view) {
      return ++boxes;
    };
    std::size_t reads = 0;
    busy.tap.before = [&](const Tap::Call& call) {
      if (boxes == 0 && call.operation == "ReadRegister") ++reads;
      return true;
    };
    busy.Run(kErase);
    EXPECT_EQ(boxes, 1);
    // Two statuses; two keys taken at once, one never; the end that never comes.
    EXPECT_EQ(reads, 2U + 2U + 2U * (static_cast<unsigned>(retries) + 1));
  }
}

TEST_F(TwoWireFaults, WithoutAResetPulseNothingPasses) {
  host.tap.before = [](const Tap::Call& call) {
    return call.operation != "QueueDelay" || call.value != 20;
  };
  EXPECT_EQ(host.Run(kProgram), 1);
}

TEST_F(TwoWireFaults, ABitDrivenAgainstTheChipIsAConflict) {
  // A stop clock behind an answer is the first clock of the next frame.
  host.tap.before = [this](const Tap::Call& call) {
    if (call.operation == "ReadRegister") {
      host.bench.programmer().WriteRegister(0x80, reg::kFrameBit);
      host.bench.programmer().WriteRegister(0xFF, reg::kFrameByte);
    }
    return true;
  };
  host.Run(kVerify);
  EXPECT_GT(Conflicts(host), 0U);
}

}  // namespace
}  // namespace fliglaf
