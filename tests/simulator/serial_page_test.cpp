// Families 13, 14 and 15: fuses and calibration, a slow start, stops.
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

constexpr std::uint8_t kRead = 2, kBlank = 4, kProgram = 6;
constexpr std::uint8_t kErase = 8;

constexpr int kPages = 4;
constexpr int kEepromBytes = 8;

/// With four pages, and eight bytes of EEPROM where it has any.
DeviceProfile Device(std::string_view name) {
  const DeviceProfile& known = test::Known(name);
  const bool eeprom = known.data_size > 0;
  DeviceProfile device = test::Sized(name, kPages * known.page + (eeprom ? kEepromBytes + 16 : 32));
  if (eeprom) device.data_size = kEepromBytes;
  device.retries = 1;
  return device;
}

class SerialPage : public testing::TestWithParam<const char*> {
 protected:
  SerialPage() {
    test::ConfigByteIn(image_, device_, "lock") = 0xFF;
    test::LeaveOpen(image_, device_);
    host_.SetImage(image_);
  }
  [[nodiscard]] bool framed() const { return device_.family == 15; }

  const DeviceProfile device_ = Device(GetParam());
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

  TestHost hasty(Device("isp-page-8k"));
  hasty.tap.before = [&](const Tap::Call& call) {
    if (call.operation != "DelayMs") return true;
    hasty.bench.programmer().DelayMs(15);
    return false;
  };
  EXPECT_EQ(hasty.Run(kBlank), 1) << "the part listens 20 ms after its reset";
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
