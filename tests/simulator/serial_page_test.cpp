// Families 13, 14 and 15: fuses and calibration, every wait and step of the power-up, stops.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/chips/serial_page_chip.h"
#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::RandomBytes;
using test::Tap;
using test::TestHost;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRead = 2, kVerify = 3, kBlank = 4, kProgram = 6;
constexpr std::uint8_t kErase = 8, kConfig = 9;

constexpr int kPages = 4;
constexpr int kEepromBytes = 8;

/// With four pages and eight bytes of EEPROM.
DeviceProfile Device(std::string_view name) {
  const DeviceProfile& known = test::Known(name);
  DeviceProfile device = test::Sized(name, kPages * known.page + 32);
  device.retries = 1;
  if (known.data_size == 0) return device;
  device = test::Sized(name, kPages * known.page + kEepromBytes + 16);
  device.data_size = kEepromBytes;
  device.retries = 1;
  return device;
}

class SerialPage : public testing::TestWithParam<const char*> {
 protected:
  SerialPage() {
    test::ConfigByteIn(image_, device_, "lock") =
        framed() ? 0x03 : 0xCB;  // bits of the boot section
    test::LeaveOpen(image_, device_);
    host_.SetImage(image_);
  }
  [[nodiscard]] bool framed() const { return device_.family == 15; }

  /// Whether a chip holds what the image says.
  bool Holds(TestHost& host) const {
    const auto fuses = host.cells("fuses");
    constexpr std::size_t kFuses[] = {0, 2, 4};  // low, high, extended
    const std::size_t start = static_cast<std::size_t>(LayoutOf(device_).config_start);
    for (std::size_t i = 0; i < fuses.size(); ++i) {
      const int bits = framed() ? 0x0F : fuses.size() == 1 ? 0x7F : 0xFF;
      if ((fuses[i] & bits) != (image_[start + kFuses[i]] & bits)) return false;
    }
    if (host.cells("lock")[0] != image_[start + (framed() ? 1 : 3)]) return false;
    Bytes memories = host.flash();
    const auto eeprom = host.cells("eeprom");
    memories.insert(memories.end(), eeprom.begin(), eeprom.end());
    return std::equal(memories.begin(), memories.end(), image_.begin());
  }

  const DeviceProfile device_ = Device(GetParam());
  const std::int32_t kWait = device_.write_time;
  TestHost host_{device_};
  Bytes image_ = RandomBytes(static_cast<std::size_t>(device_.image_bytes), 21);
};
INSTANTIATE_TEST_SUITE_P(Devices, SerialPage,
                         testing::Values("isp-page-8k", "isp-page-16k", "isp-page3-8k",
                                         "isp-frame-2k"));

TEST(SerialPageFuses, OfANewPartAreThoseOfTheFactory) {
  const std::pair<const char*, Bytes> kFuses[] = {{"isp-page-8k", {0xDF}},
                                                  {"isp-page-16k", {0x62, 0xDF}},
                                                  {"isp-page3-8k", {0x62, 0xDF, 0xFF}},
                                                  {"isp-frame-2k", {0x0E}}};
  for (const auto& [name, fuses] : kFuses) {
    TestHost host(name);
    EXPECT_TRUE(std::ranges::equal(host.cells("fuses"), fuses)) << name;
  }
}

/// Each wait of an erase, a write loop and a configuration write is left out in turn.
TEST_P(SerialPage, EveryWaitIsNeededButWhereMoreWaitFollows) {
  const auto run = [&](int left_out) {
    TestHost host(device_);
    host.SetImage(image_);
    int waits = 0;
    host.tap.before = [&](const Tap::Call& call) {
      const bool of_the_device =
          (call.operation == "QueueDelay" || call.operation == "ShortDelay") && call.value >= kWait;
      return !of_the_device || waits++ != left_out;
    };
    const bool good = host.Run({kErase, kProgram, kConfig, kVerify}) == 0 && Holds(host);
    return std::pair{good, waits};
  };
  const auto [good, waits] = run(-1);
  ASSERT_TRUE(good);
  const int eeprom = framed() ? 0 : kEepromBytes;
  const auto fuses = static_cast<int>(host_.cells("fuses").size());
  ASSERT_EQ(waits, 1 + kPages + eeprom + (framed() ? 0 : fuses + 1));
  for (int i = 0; i < waits; ++i) {
    const bool last_of_loop = i == kPages || (eeprom > 0 && i == kPages + eeprom);
    EXPECT_EQ(run(i).first, last_of_loop) << "wait " << i;
  }
}

/// A stop at any point of an operation: nothing is written after it, and the run is ended.
TEST_P(SerialPage, StopInEachPhaseEndsTheRun) {
  ASSERT_EQ(host_.Run({kErase, kProgram}), 0);
  const auto stop_at = [&](std::uint8_t code, std::string_view operation, std::size_t nth) {
    host_.tap.calls.clear();
    host_.tap.before = [&, operation, nth](const Tap::Call& call) {
      if (call.operation == operation && host_.tap.Count(operation) == nth) {
        host_.vars.quorinprgresult[0] = 2;
      }
      return true;
    };
    EXPECT_EQ(host_.Run(code), 2);
    host_.tap.before = nullptr;
    EXPECT_THAT(host_.log(), HasSubstr("stopped\n"));
    EXPECT_EQ(host_.tap.Count("SignalFail"), 1U);
    EXPECT_EQ(host_.tap.calls.back().operation, "EndRun");
  };
  stop_at(kProgram, "QueueRegisterWrite", 20);
  EXPECT_EQ(host_.tap.Count("usbbulkread"), 0U) << "no verify";
  EXPECT_EQ(host_.tap.Count("FlushQueue"), framed() ? 0U : 1U) << "what is queued is not sent";
  const Bytes before = host_.image();
  stop_at(kRead, "QueueRegisterWrite", 20);
  EXPECT_EQ(host_.tap.Count("BlockTransfer"), 0U);
  stop_at(kRead, "usbbulkread", 1);
  EXPECT_EQ(host_.tap.Count("BlockTransfer"), 0U);
  if (!framed()) {
    stop_at(kProgram, "QueueDelay", kPages + 2);  // the second EEPROM byte
    EXPECT_EQ(host_.tap.Count("usbbulkread"), 0U);
    stop_at(kRead, "usbbulkread", 2);  // that of the EEPROM
    EXPECT_EQ(host_.tap.Count("BlockTransfer"), host_.flash().size());
  }
  EXPECT_EQ(host_.image(), before) << "the configuration is not read after a stop";
}

/// Steps of the power-up without which the chip does not come into programming mode.
TEST_P(SerialPage, PowerUpStepsAreNeeded) {
  const Tap::Call word_steps[] = {{"WriteLatch", 0, 2},
                                  {"WriteLatch", 2, 1},
                                  {"WriteRegister", 0xAC, 0x8E},
                                  {"WriteRegister", 0x53, 0x8E},
                                  {"WriteRegister", 0, 0x8E}};
  const Tap::Call framed_steps[] = {{"WriteLatch", 8, 2},          {"WriteLatch", 2, 1},
                                    {"WriteLatch", 0x84, 0},       {"WriteRegister", 0xAA, 0x8E},
                                    {"WriteRegister", 0xAC, 0x8E}, {"WriteRegister", 0x53, 0x8E}};
  ASSERT_EQ(host_.Run({kErase, kProgram}), 0);
  for (const Tap::Call& step : framed() ? std::span<const Tap::Call>(framed_steps) : word_steps) {
    host_.tap.before = [&](const Tap::Call& call) {
      return !(call.operation == step.operation && call.value == step.value &&
               call.target == step.target);
    };
    EXPECT_EQ(host_.Run(kVerify), 1) << step.operation << " " << step.value << " " << step.target;
  }
}

TEST(SerialPageEnable, IsRepeatedUntilASlowChipEchoes) {
  DeviceProfile device = Device("isp-page-8k");
  device.chip.start_up_ms = 500;  // it has been powered for 400 ms at the first attempt
  const auto pulses = [&](std::int16_t retries, int result) {
    device.retries = retries;
    TestHost host(device);
    EXPECT_EQ(host.Run(kBlank), result) << retries << " attempts: " << host.log();
    return std::ranges::count_if(host.tap.calls,
                                 [](const Tap::Call& call) {
                                   return call.operation == "WriteLatch" && call.value == 8 &&
                                          call.target == 2;
                                 }) -
           1;  // the first one sets the lines up
  };
  EXPECT_EQ(pulses(0, 1), 1);
  EXPECT_EQ(pulses(1, 1), 1);
  EXPECT_EQ(pulses(2, 0), 2);
  EXPECT_EQ(pulses(9, 0), 2);
}

TEST(SerialPageConfig, CalibrationByteBelongsToTheClockSource) {
  TestHost host("isp-page-16k");
  const std::pair<std::uint8_t, std::size_t> kSources[] = {{0, 0}, {1, 0}, {3, 2}, {5, 0}, {7, 2}};
  for (const auto& [source, which] : kSources) {
    host.cells("fuses")[0] = static_cast<std::uint8_t>(0xE0 | source);
    ASSERT_EQ(host.Run(kRead), 0);
    Bytes image = host.image();
    EXPECT_EQ(test::ConfigByteIn(image, test::Known("isp-page-16k"), "calibration"),
              simulator::SerialPageChip::kCalibration[which])
        << int{source};
  }
}

TEST(SerialPageMemory, BeyondOneTransferIsRefusedBeforeAnythingIsDone) {
  for (const auto& [name, size] :
       {std::pair{"isp-page-16k", 8192 + kEepromBytes + 17}, {"isp-frame-2k", 16384 + 33}}) {
    TestHost host(Device(name));
    host.vars.quorintlength[0] = size;
    std::ranges::fill(host.cells("flash"), std::uint8_t{0x5A});
    for (const std::uint8_t code : {kRead, kProgram, kErase}) {
      EXPECT_EQ(host.Run(code), 1);
      EXPECT_THAT(host.log(), HasSubstr("bytes cannot be read; 16384 bytes at most"));
    }
    EXPECT_EQ(host.tap.Count("usbbulkread"), 0U);
    EXPECT_THAT(host.flash(), testing::Each(0x5A)) << "neither written nor erased";
    EXPECT_EQ(host.tap.calls.back().operation, "EndRun");
  }
}

}  // namespace
}  // namespace fliglaf
