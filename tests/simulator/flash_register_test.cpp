// Families 8 to 11: the last page, the reset of the chip, waits that are too short, and a stop.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::RandomBytes;
using test::Tap;
using test::TestHost;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kVerify = 3, kProgram = 6, kErase = 8;

/// With four pages, and times that nothing else on the bench takes.
DeviceProfile Device(std::string_view name) {
  const DeviceProfile& known = test::Known(name);
  DeviceProfile device = test::Sized(name, 4 * known.page + known.data_size);
  device.write_time = 200;
  device.chip.byte_write_us = 190;
  device.chip.erase_ms = 90;
  return device;
}

class FlashRegister : public testing::TestWithParam<const char*> {
 protected:
  FlashRegister() {
    image_[lock()] = image_[lock() + 1] = 0xFF;
    host_.SetImage(image_);
  }
  [[nodiscard]] std::size_t lock() const {
    return static_cast<std::size_t>(LayoutOf(device_).config_start);
  }

  const DeviceProfile device_ = Device(GetParam());
  const std::int32_t kWait = device_.write_time;
  TestHost host_{device_};
  Bytes image_ = RandomBytes(static_cast<std::size_t>(device_.image_bytes), 8);
};
INSTANTIATE_TEST_SUITE_P(Devices, FlashRegister,
                         testing::Values("jtag-flash-16k", "jtag-flash-32k-adapter22",
                                         "jtag-flash9-8k-adapter23", "jtag-flash10-64k",
                                         "jtag-flash10-128k", "jtag-flash11-128k"));

TEST_P(FlashRegister, OnlyFamily9ProgramsTheLastPage) {
  ASSERT_EQ(host_.Run({kErase, kProgram}), 0) << host_.log();
  const auto last_page = host_.cells("last-page");
  EXPECT_EQ(std::ranges::equal(last_page, std::span(image_).subspan(lock() + 2, last_page.size())),
            device_.family == 9);
}

TEST_P(FlashRegister, AWaitThatIsTooShortIsFound) {
  for (const std::int32_t times : {device_.family >= 10 ? 2 : 1, device_.family == 9 ? 600 : 500}) {
    TestHost host(device_);
    host.SetImage(image_);
    std::ranges::fill(host.cells("flash"), std::uint8_t{0});
    host.tap.before = [times, this](const Tap::Call& call) {
      return call.operation != "QueueDelay" || call.value != times * kWait;
    };
    EXPECT_EQ(host.Run({kErase, kProgram}), 1) << times;
  }
}

/// A chip that is never reset, as far as its flash goes.
TEST_P(FlashRegister, WithoutItsResetNothingPasses) {
  host_.tap.before = [](const Tap::Call& call) {
    return call.operation != "QueueRegisterWrite" || call.value != 0xF4;  // the end of 0x2FFF
  };
  EXPECT_EQ(host_.Run(kVerify), 1);
}

TEST_P(FlashRegister, AStopWhileBytesAreWrittenLeavesOutTheLockBytes) {
  host_.tap.before = [this](const Tap::Call& call) {
    if (call.operation == "QueueDelay" && host_.tap.Count("QueueDelay") == 100) {
      host_.vars.quorinprgresult[0] = 2;
    }
    return true;
  };
  EXPECT_EQ(host_.Run(kProgram), 2);
  EXPECT_EQ(host_.tap.Count("usbbulkread"), 0U);
  // The mode packet; families 8 and 9 still begin a verify: opening, capture, closing.
  EXPECT_EQ(host_.tap.Count("usbcomwrite"), device_.family >= 10 ? 1U : 4U);
}

TEST(FlashRegisterFamily10, RepeatsAFirstVerifyThatFails) {
  const DeviceProfile device = Device("jtag-flash10-64k");
  for (const std::int16_t retries : {std::int16_t{0}, std::int16_t{2}}) {
    TestHost host(device, {.stuck_bits = {{5, 0, true}}});
    host.SetImage(Bytes(static_cast<std::size_t>(device.image_bytes)));
    host.vars.quorinwretry[0] = retries;
    host.vars.quorinwlverifyvcc[0] = 1;
    EXPECT_EQ(host.Run(kProgram), 1);
    // The lock bytes, the first verify and its repeats; each ends at the first block.
    EXPECT_EQ(host.tap.Count("usbbulkread"), 2U + static_cast<unsigned>(retries));
  }
}

TEST(FlashRegisterFamily10, ReachesBeyond64KiB) {
  const DeviceProfile device = test::Sized("jtag-flash10-128k", 0x1'0C00 + 256);
  TestHost host(device);
  host.vars.quorinwltbigendbuf[0] = 0xFC00;  // the page below, and that above
  host.vars.quorinwltbigendbuf[1] = 0x1'03FF;
  const Bytes image = RandomBytes(static_cast<std::size_t>(device.image_bytes), 9);
  host.SetImage(image);
  ASSERT_EQ(host.Run(kProgram), 0) << host.log();
  const auto flash = host.cells("flash");
  EXPECT_TRUE(std::equal(flash.begin(), flash.end(), image.begin()));
}

}  // namespace
}  // namespace fliglaf
