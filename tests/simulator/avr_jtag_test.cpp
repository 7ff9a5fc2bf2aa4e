// Families 4 to 7 end to end: both forms of the page register, both sets of fuses, what goes wrong
// on the bench, and waits that are too short.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shared/text.h"
#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::RandomBytes;
using test::Tap;
using test::TestDevice;
using test::TestHost;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRead = 2, kVerify = 3, kProgram = 6, kErase = 8, kConfig = 9;
constexpr std::int32_t kWait = 5000;  // µs
constexpr std::uint32_t kBlock = 16'384;
constexpr std::uint32_t kEepromBytes = 64;

/// Where the configuration stands, from the image's end.
constexpr int kFuseLow = 32, kCalibration = 31, kFuseHigh = 30, kLock = 29, kFuseExtended = 28;

struct Variant {
  std::uint8_t family;
  std::uint8_t option;
  std::uint32_t flash_bytes;
};

void PrintTo(const Variant& variant, std::ostream* out) {
  *out << "family " << int{variant.family} << " option " << int{variant.option};
}

TestDevice Device(const Variant& variant) {
  const auto size = static_cast<std::int32_t>((variant.flash_bytes + kEepromBytes) / 2 + 16);
  return {.chip = {.family = variant.family,
                   .option = variant.option,
                   .flash_bytes = variant.flash_bytes,
                   .page_bytes = 256,
                   .eeprom_bytes = kEepromBytes,
                   .signature = {0x1E, 0x97, variant.family},
                   .supply = {.vcc = {40}, .gnd = {20}},
                   .page_write_us = 4500,
                   .eeprom_write_us = 4500,
                   .config_write_us = 4500,
                   .erase_ms = 9},
          .size = size,
          .image_bytes = 2 * size,
          .data_size = kEepromBytes / 2,
          .page = 128,
          .write_time = kWait};
}

class AvrJtag : public testing::TestWithParam<Variant> {
 protected:
  AvrJtag() {
    Config(kLock) = 0xFF;
    host_.SetImage(image_);
  }
  std::uint8_t& Config(int below_end) {
    return image_[image_.size() - static_cast<std::size_t>(below_end)];
  }
  bool Holds(TestHost& host) {
    const auto flash = host.cells("flash");
    const auto eeprom = host.cells("eeprom");
    const auto end = std::equal(flash.begin(), flash.end(), image_.begin());
    return end && std::equal(eeprom.begin(), eeprom.end(), image_.begin() + std::ssize(flash));
  }

  const TestDevice device_ = Device(GetParam());
  TestHost host_{device_};
  Bytes image_ = RandomBytes(static_cast<std::size_t>(device_.image_bytes), 31);
};
INSTANTIATE_TEST_SUITE_P(Variants, AvrJtag,
                         testing::Values(Variant{4, 6, 2 * kBlock}, Variant{4, 4, kBlock},
                                         Variant{5, 5, kBlock}, Variant{6, 7, 2 * kBlock},
                                         Variant{7, 8, kBlock}, Variant{7, 6, kBlock}));

TEST_P(AvrJtag, RandomImageSurvives) {
  host_.vars.quorinchipidtestmode[0] = -1;
  host_.vars.quorincompid[0] = 0x1E;
  host_.vars.quorintypeid[0] = 0x97;
  host_.vars.quorinwlverifyvcc[0] = 1;
  ASSERT_EQ(host_.Run({kErase, kProgram, kConfig}), 0) << host_.log();
  EXPECT_TRUE(Holds(host_));
  EXPECT_THAT(host_.log(), HasSubstr(">>M1E   D970" + std::to_string(GetParam().family)));
  EXPECT_THAT(host_.log(), HasSubstr(">><op8>\n>><Blank Check>\n>>op8 ok\n"));
  EXPECT_EQ(host_.cells("fuse-high")[0], Config(kFuseHigh) & 0xBF);  // JTAGEN stays programmed

  host_.SetImage(Bytes(image_.size()));
  ASSERT_EQ(host_.Run(kRead), 0) << host_.log();
  const bool extended = GetParam().option != 6;
  Config(kFuseHigh) &= 0xBF;
  Config(kCalibration) = 0xB1;
  if (!extended) Config(kFuseExtended) = 0;
  std::fill(image_.end() - kFuseExtended + 1, image_.end(), std::uint8_t{0});
  EXPECT_EQ(host_.image(), image_);
}

TEST_P(AvrJtag, LockForbidsAndEraseLifts) {
  Config(kLock) = 0xFC;
  host_.SetImage(image_);
  ASSERT_EQ(host_.Run({kErase, kProgram, kConfig}), 0) << host_.log();
  EXPECT_EQ(host_.Run(kVerify), 1);
  EXPECT_EQ(host_.Run(kProgram), 1);
  EXPECT_EQ(host_.Run({kErase, kProgram}), 0) << host_.log();
}

TEST_P(AvrJtag, AWaitThatIsTooShortIsFound) {
  host_.tap.before = [](const Tap::Call& call) {
    return call.operation != "QueueDelay" || call.value != kWait;
  };
  EXPECT_EQ(host_.Run(kProgram), 1);
}

TEST_P(AvrJtag, FaultsOnTheBenchAreFound) {
  for (const bool level : {false, true}) {
    TestHost host(device_, {.answer_stuck = level});
    host.SetImage(image_);
    EXPECT_EQ(host.Run(kProgram), 1) << level;
    EXPECT_THAT(host.log(), HasSubstr(level ? "Device Data:FFH" : "Device Data:00H"));
  }
  const std::uint32_t address = GetParam().flash_bytes - 5;
  const bool wrong = (image_[address] & 0x08) == 0;
  TestHost stuck(device_, {.stuck_bits = {{address, 3, wrong}}});
  stuck.SetImage(image_);
  EXPECT_EQ(stuck.Run(kProgram), 1);
  EXPECT_THAT(stuck.log(),
              HasSubstr("Device Address:" + test::Narrow(HexDigits(address, 8)) + "H"));
}

TEST_P(AvrJtag, WithoutProgrammingModeNothingPasses) {
  // The part of the programming enable's signature that is sent as six bits.
  host_.tap.before = [](const Tap::Call& call) {
    return call.operation != "QueueRegisterWrite" || call.target != 0x90 || call.value != 0x23;
  };
  EXPECT_EQ(host_.Run(kVerify), 1);
  EXPECT_EQ(host_.Run({kErase, kProgram}), 1);
  EXPECT_FALSE(Holds(host_));
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
