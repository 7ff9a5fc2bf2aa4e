// Families 8 to 11 end to end: both register sets, all wirings, locks, what goes wrong on the
// bench, and waits that are too short.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::RandomBytes;
using test::Tap;
using test::TestDevice;
using test::TestHost;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRead = 2, kVerify = 3, kProgram = 6, kErase = 8, kLock = 9;
constexpr std::int32_t kWait = 200;  // µs
constexpr std::int16_t kPage = 512;
constexpr std::int16_t kSecond = 128;

struct Variant {
  std::uint8_t family;
  std::uint8_t option;
  std::int32_t flash;  ///< bytes, lock bytes and last page included
};

void PrintTo(const Variant& variant, std::ostream* out) {
  *out << "family " << int{variant.family} << " option " << int{variant.option};
}

TestDevice Device(const Variant& variant) {
  const std::int32_t size = variant.flash + kSecond;
  return {.chip = {.family = variant.family,
                   .option = variant.option,
                   .flash_bytes = static_cast<std::uint32_t>(variant.flash - kPage - 2),
                   .page_bytes = kPage,
                   .eeprom_bytes = kSecond,
                   .signature = {0x43, variant.family, 0x03},
                   .supply = {.vcc = {40}, .gnd = {20}},
                   .byte_write_us = 190,
                   .erase_ms = 90},
          .size = size,
          .image_bytes = size,
          .data_size = kSecond,
          .page = kPage,
          .write_time = kWait,
          .retries = 2};
}

class FlashRegister : public testing::TestWithParam<Variant> {
 protected:
  FlashRegister() {
    image_[lock()] = image_[lock() + 1] = 0xFF;
    host_.SetImage(image_);
  }
  [[nodiscard]] std::size_t lock() const {
    return static_cast<std::size_t>(GetParam().flash - kPage - 2);
  }
  [[nodiscard]] bool HasLock() const { return GetParam().family != 11; }
  [[nodiscard]] bool Holds(std::string_view area, std::size_t start) {
    const auto cells = host_.cells(area);
    return std::equal(cells.begin(), cells.end(),
                      image_.begin() + static_cast<std::ptrdiff_t>(start));
  }

  const TestDevice device_ = Device(GetParam());
  TestHost host_{device_};
  Bytes image_ = RandomBytes(static_cast<std::size_t>(device_.image_bytes), 8);
};
INSTANTIATE_TEST_SUITE_P(Variants, FlashRegister,
                         testing::Values(Variant{8, 11, 0x1000}, Variant{8, 22, 0x4400},
                                         Variant{9, 23, 0x1000}, Variant{10, 13, 0x4400},
                                         Variant{10, 15, 0x1000}, Variant{11, 24, 0x1000}));

TEST_P(FlashRegister, RandomImageSurvives) {
  host_.vars.quorinchipidtestmode[0] = -1;
  host_.vars.quorincompid[0] = 0x43;
  host_.vars.quorintypeid[0] = GetParam().family;
  host_.vars.quorinwlverifyvcc[0] = 1;
  ASSERT_EQ(host_.Run({kErase, kProgram}), 0) << host_.log();
  EXPECT_TRUE(Holds("flash", 0));
  EXPECT_TRUE(Holds("second", static_cast<std::size_t>(GetParam().flash)));
  EXPECT_EQ(Holds("last-page", lock() + 2), GetParam().family == 9);
  EXPECT_THAT(host_.log(), HasSubstr(">>M43   D0"));
  EXPECT_THAT(host_.log(), HasSubstr(">><op8>\n>><Blank Check>\n>>op8 ok\n"));

  host_.SetImage(Bytes(image_.size()));
  ASSERT_EQ(host_.Run(kRead), 0) << host_.log();
  const auto last_page = image_.begin() + static_cast<std::ptrdiff_t>(lock()) + 2;
  std::fill(last_page, last_page + kPage, std::uint8_t{0});
  EXPECT_EQ(host_.image(), image_);
}

TEST_P(FlashRegister, LocksForbidAndEraseLifts) {
  if (!HasLock()) GTEST_SKIP() << "family 11 writes no lock bytes";
  ASSERT_EQ(host_.Run({kErase, kProgram}), 0) << host_.log();
  image_[lock()] = 0xFE;
  host_.SetImage(image_);
  ASSERT_EQ(host_.Run(kLock), 0) << host_.log();
  EXPECT_EQ(host_.Run(kVerify), 0) << host_.log();  // still to be read
  image_[lock() + 1] = 0xFE;
  image_[0] ^= 0xFF;
  host_.SetImage(image_);
  ASSERT_EQ(host_.Run(kLock), 0) << host_.log();
  EXPECT_EQ(host_.Run(kProgram), 1);
  EXPECT_EQ(host_.Run(kVerify), 1);
  EXPECT_THAT(host_.log(), HasSubstr("Device Data:00H"));
  host_.SetImage(image_);
  EXPECT_EQ(host_.Run({kErase, kProgram}), 0) << host_.log();
  EXPECT_EQ(host_.cells("lock")[0], 0xFF);
}

TEST_P(FlashRegister, AWaitThatIsTooShortIsFound) {
  for (const std::int32_t times :
       {GetParam().family >= 10 ? 2 : 1, GetParam().family == 9 ? 600 : 500}) {
    TestHost host(device_);
    host.SetImage(image_);
    std::ranges::fill(host.cells("flash"), std::uint8_t{0});
    host.tap.before = [times](const Tap::Call& call) {
      return call.operation != "QueueDelay" || call.value != times * kWait;
    };
    EXPECT_EQ(host.Run({kErase, kProgram}), 1) << times;
  }
}

TEST_P(FlashRegister, FaultsOnTheBenchAreFound) {
  for (const bool level : {false, true}) {
    TestHost host(device_, {.answer_stuck = level});
    host.SetImage(image_);
    EXPECT_EQ(host.Run(kProgram), 1) << level;
    EXPECT_THAT(host.log(), HasSubstr(level ? "Device Data:FFH" : "Device Data:00H"));
  }
  // A chip that is never reset, as far as its flash goes.
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
  EXPECT_EQ(host_.tap.Count("usbcomwrite"), GetParam().family >= 10 ? 1U : 4U);
}

TEST(FlashRegisterFamily10, RepeatsAFirstVerifyThatFails) {
  const TestDevice device = Device({10, 11, 0x1200});
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
  const TestDevice device = Device({10, 15, 0x1'0400});
  TestHost host(device);
  const Bytes image = RandomBytes(static_cast<std::size_t>(device.image_bytes), 9);
  host.SetImage(image);
  ASSERT_EQ(host.Run(kProgram), 0) << host.log();
  const auto flash = host.cells("flash");
  EXPECT_TRUE(std::equal(flash.begin(), flash.end(), image.begin()));
}

}  // namespace
}  // namespace fliglaf
