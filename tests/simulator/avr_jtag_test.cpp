// Families 4 to 7: the configuration, programming mode, waits that are too short, and a stop.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::ConfigByteIn;
using test::RandomBytes;
using test::Tap;
using test::TestHost;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRead = 2, kVerify = 3, kProgram = 6, kErase = 8, kConfig = 9;
constexpr std::int32_t kWait = 5000;  // µs

/// A device of each family and with either set of fuses, with a block of flash.
class AvrJtag : public testing::TestWithParam<const char*> {
 protected:
  AvrJtag() {
    ConfigByteIn(image_, device_, "lock") = 0xFF;
    host_.SetImage(image_);
  }

  const DeviceProfile device_ = [] {
    DeviceProfile device = test::Known(GetParam());
    return test::Sized(GetParam(), 8192 + device.data_size + 16);
  }();
  TestHost host_{device_};
  Bytes image_ = RandomBytes(static_cast<std::size_t>(device_.image_bytes), 31);
};
INSTANTIATE_TEST_SUITE_P(Devices, AvrJtag,
                         testing::Values("jtag-byte-16k", "jtag-byte3-16k", "jtag-page2-32k",
                                         "jtag-page-128k", "jtag-page-16k"));

TEST_P(AvrJtag, JtagenStaysProgrammedAndWhatThereIsNotIsLeftAlone) {
  ConfigByteIn(image_, device_, "high") = 0xC1;
  host_.SetImage(image_);
  ASSERT_EQ(host_.Run(kConfig), 0) << host_.log();
  EXPECT_EQ(host_.cells("fuse-high")[0], 0x81);
  host_.SetImage(Bytes(image_.size()));
  ASSERT_EQ(host_.Run(kRead), 0) << host_.log();
  Bytes read = host_.image();
  EXPECT_EQ(ConfigByteIn(read, device_, "calibration"), 0xB1);
  const bool extended = ConfigBytesOf(device_).size() > 4;
  EXPECT_EQ(read[read.size() - 28] != 0, extended);
  EXPECT_THAT(Bytes(read.end() - 27, read.end()), testing::Each(0));
}

TEST_P(AvrJtag, AWaitThatIsTooShortIsFound) {
  host_.tap.before = [](const Tap::Call& call) {
    return call.operation != "QueueDelay" || call.value != kWait;
  };
  EXPECT_EQ(host_.Run(kProgram), 1);
}

TEST_P(AvrJtag, WithoutProgrammingModeNothingPasses) {
  // The part of the programming enable's signature that is sent as six bits.
  host_.tap.before = [](const Tap::Call& call) {
    return call.operation != "QueueRegisterWrite" || call.target != 0x90 || call.value != 0x23;
  };
  EXPECT_EQ(host_.Run(kVerify), 1);
  EXPECT_EQ(host_.Run({kErase, kProgram}), 1);
  EXPECT_THAT(host_.flash(), testing::Each(0xFF));
}

TEST_P(AvrJtag, StopDuringABulkReadEndsThePass) {
  ASSERT_EQ(host_.Run(kProgram), 0);
  host_.tap.calls.clear();
  host_.desktop.on_turn = [this] {
    if (host_.tap.Count("usbbulkread") == 1) host_.vars.quorinprgresult[0] = 2;
    return false;
  };
  EXPECT_EQ(host_.Run(kVerify), 2);
  EXPECT_EQ(host_.tap.Count("usbbulkread"), 1U);
  EXPECT_EQ(host_.tap.Count("BlockTransfer"), 0U);
  EXPECT_EQ(host_.tap.Count("usbcomwrite"), 5U);  // mode, opening, two captures, closing
  EXPECT_EQ(host_.tap.calls.back().operation, "EndRun");
}

}  // namespace
}  // namespace fliglaf
