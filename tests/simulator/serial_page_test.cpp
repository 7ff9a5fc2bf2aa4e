// Families 13, 14 and 15 end to end: every variant's chip, erased, written, read back, locked,
// waited for too little and stopped.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/chips/serial_page_chip.h"
#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::RandomBytes;
using test::Tap;
using test::TestDevice;
using test::TestHost;
using testing::HasSubstr;
using testing::StartsWith;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRead = 2, kVerify = 3, kBlank = 4, kCompare = 5, kProgram = 6;
constexpr std::uint8_t kErase = 8, kConfig = 9;
constexpr std::int32_t kWait = 5000;  // µs

constexpr int kFlashBytes = 128;
constexpr int kEepromBytes = 8;

/// Where the configuration stands, from the image's end.
constexpr int kFuseLow = 32, kCalibration = 31, kFuseHigh = 30, kLock = 29, kFuseExtended = 28;
constexpr int kFrameLock = 31;

struct Variant {
  std::uint8_t family;
  std::uint8_t option;
  int fuse_bytes;
};

void PrintTo(const Variant& variant, std::ostream* out) {
  *out << "family " << int{variant.family} << " option " << int{variant.option};
}

constexpr Variant kVariants[] = {{13, 14, 1}, {13, 15, 2}, {14, 14, 3}, {14, 15, 3}, {15, 0, 1}};

TestDevice Device(const Variant& variant) {
  const bool words = variant.family != 15;
  const int size = words ? kFlashBytes / 2 + kEepromBytes + 16 : kFlashBytes + 32;
  return {.chip = {.family = variant.family,
                   .option = variant.option,
                   .flash_bytes = kFlashBytes,
                   .page_bytes = 32,
                   .eeprom_bytes = words ? kEepromBytes : 0U,
                   .signature = {0x1E, 0x93, variant.family},
                   .supply = {.vcc = {40}, .gnd = {20}},
                   .page_write_us = words ? 4500 : 2000,
                   .eeprom_write_us = variant.family == 13 ? 9000 : 4500,
                   .config_write_us = words ? 4500 : 2000,
                   .erase_ms = 9},
          .size = size,
          .image_bytes = words ? 2 * size : size,
          .data_size = static_cast<std::int16_t>(words ? kEepromBytes : 0),
          .page = static_cast<std::int16_t>(words ? 16 : 32),
          .write_time = kWait,
          .retries = 1};
}

class SerialPage : public testing::TestWithParam<Variant> {
 protected:
  SerialPage() { SetImage(RandomBytes(image_.size(), 21)); }

  /// An image with no lock bit written, and with bits of the configuration that there are.
  void SetImage(Bytes bytes) {
    image_ = std::move(bytes);
    if (!framed()) {
      Config(kLock) |= 0xC3;
      Config(kFuseLow) = static_cast<std::uint8_t>((Config(kFuseLow) & 0xF8) | 4);
      if (GetParam().fuse_bytes == 1) Config(kFuseLow) |= 0x80;
    } else {
      Config(kFuseLow) &= 0x0F;
      Config(kFrameLock) = 0x03;
    }
    host_.SetImage(image_);
  }
  std::uint8_t& Config(int below_end) {
    return image_[image_.size() - static_cast<std::size_t>(below_end)];
  }
  void SetLock(std::uint8_t lock) {
    Config(framed() ? kFrameLock : kLock) = lock;
    host_.SetImage(image_);
  }
  std::string Digits(int value, int digits) {
    return test::Narrow(host_.bench.programmer().datstr(value, digits));
  }
  [[nodiscard]] static bool framed() { return GetParam().family == 15; }

  /// Whether a chip holds what the image says.
  bool Holds(TestHost& host) {
    const auto holds = [&](std::string_view area, std::size_t image_start) {
      const auto cells = host.cells(area);
      return std::equal(cells.begin(), cells.end(),
                        image_.begin() + static_cast<std::ptrdiff_t>(image_start));
    };
    const auto fuses = host.cells("fuses");
    constexpr int kFuses[] = {kFuseLow, kFuseHigh, kFuseExtended};
    for (std::size_t i = 0; i < fuses.size(); ++i) {
      if (fuses[i] != Config(kFuses[i])) return false;
    }
    return holds("flash", 0) && holds("eeprom", kFlashBytes) &&
           host.cells("lock")[0] == Config(framed() ? kFrameLock : kLock);
  }

  const TestDevice device_ = Device(GetParam());
  TestHost host_{device_};
  Bytes image_ = Bytes(static_cast<std::size_t>(device_.image_bytes));
};
INSTANTIATE_TEST_SUITE_P(Variants, SerialPage, testing::ValuesIn(kVariants));

TEST_P(SerialPage, RandomImageSurvivesEraseProgramConfigReadAndCompare) {
  ASSERT_EQ(host_.Run({kErase, kProgram, kConfig, kVerify}), 0) << host_.log();
  EXPECT_TRUE(Holds(host_));
  EXPECT_THAT(host_.log(), StartsWith(">><op8>\n>><Blank Check>\n>>op8 ok\n>><op6>\n>><Verify>\n"
                                      ">>op6 ok\n>><op9>\n>>op9 ok\n"));

  host_.SetImage(Bytes(image_.size(), 0x55));
  ASSERT_EQ(host_.Run(kRead), 0);
  Bytes expected(image_.size(), 0x55);
  std::copy_n(image_.begin(), kFlashBytes + (framed() ? 0 : kEepromBytes), expected.begin());
  const auto expect = [&](int below_end, std::uint8_t byte) {
    expected[expected.size() - static_cast<std::size_t>(below_end)] = byte;
  };
  if (!framed()) {
    expect(kFuseLow, Config(kFuseLow));
    expect(kLock, Config(kLock));
  }
  if (!framed() && GetParam().fuse_bytes > 1) {
    const auto calibration = simulator::SerialPageChip::kCalibration;
    expect(kCalibration, GetParam().family == 13 ? calibration[3] : calibration[0]);
    expect(kFuseHigh, Config(kFuseHigh));
    expect(kFuseExtended, GetParam().family == 13 ? 0xFF : Config(kFuseExtended));
  }
  EXPECT_EQ(host_.image(), expected);

  host_.vars.quorinibuffer[0x47] ^= 0xFF;
  EXPECT_EQ(host_.Run(kCompare), 0);
  EXPECT_THAT(host_.log(), StartsWith("h1\nh2\n>> 00000047H  "));
}

TEST_P(SerialPage, OneWrongBitIsFoundAtItsAddress) {
  ASSERT_EQ(host_.Run({kErase, kProgram}), 0);
  std::vector<std::pair<std::string, int>> places{{"flash", 0}, {"flash", 0x7F}};
  if (!framed()) places.insert(places.end(), {{"eeprom", 0}, {"eeprom", kEepromBytes - 1}});
  for (const auto& [area, address] : places) {
    std::uint8_t& cell = host_.cells(area)[static_cast<std::size_t>(address)];
    cell ^= 0x10;
    EXPECT_EQ(host_.Run(kVerify), 1);
    EXPECT_THAT(host_.log(), HasSubstr(">>Device Address:" +
                                       Digits(address + (area == "eeprom" ? kFlashBytes : 0), 8)));
    cell ^= 0x10;
    EXPECT_EQ(host_.Run(kVerify), 0) << host_.log();
    host_.vars.quorinMainRtstr.Set(0, u"");
  }
  EXPECT_EQ(host_.Run(kBlank), 1);
}

TEST_P(SerialPage, LockForbidsWhatItShouldAndEraseLiftsIt) {
  ASSERT_EQ(host_.Run({kErase, kProgram, kConfig}), 0);
  const std::uint8_t open = Config(framed() ? kFrameLock : kLock);
  SetLock(open & 0xFE);
  ASSERT_EQ(host_.Run({kConfig, kVerify}), 0) << "reading is allowed";
  const Bytes written = image_;
  SetImage(Bytes(image_.size(), 0x00));
  EXPECT_EQ(host_.Run(kProgram), 1) << "writing is not";
  image_ = written;
  EXPECT_TRUE(Holds(host_));

  SetLock(open & 0xFC);
  EXPECT_EQ(host_.Run({kConfig, kVerify}), 1) << "nor is reading now";
  EXPECT_EQ(host_.Run(kBlank), 1) << "what is hidden does not look blank";
  ASSERT_EQ(host_.Run(kErase), 0) << host_.log();
  SetLock(open);
  EXPECT_EQ(host_.Run({kProgram, kConfig, kVerify}), 0);
  EXPECT_TRUE(Holds(host_));
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
  const int pages = kFlashBytes / 32;
  const int eeprom = framed() ? 0 : kEepromBytes;
  ASSERT_EQ(waits, 1 + pages + eeprom + (framed() ? 0 : std::max(GetParam().fuse_bytes, 1) + 1));
  for (int i = 0; i < waits; ++i) {
    const bool last_of_loop = i == pages || (eeprom > 0 && i == pages + eeprom);
    EXPECT_EQ(run(i).first, last_of_loop) << "wait " << i;
  }
}

TEST_P(SerialPage, SignatureIsRead) {
  host_.vars.quorinchipidtestmode[0] = -1;
  host_.vars.quorincompid[0] = 0x1E;
  host_.vars.quorintypeid[0] = 0x93;
  EXPECT_EQ(host_.Run(kBlank), 0);
  const auto third = Digits(GetParam().family, 2);
  EXPECT_THAT(host_.log(), StartsWith(">>M1E   D93" + third + "\n>><op4>"));
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
    stop_at(kProgram, "QueueDelay", kFlashBytes / 32 + 2);  // the second EEPROM byte
    EXPECT_EQ(host_.tap.Count("usbbulkread"), 0U);
    stop_at(kRead, "usbbulkread", 2);  // that of the EEPROM
    EXPECT_EQ(host_.tap.Count("BlockTransfer"), std::size_t{kFlashBytes});
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
  TestDevice device = Device(kVariants[0]);
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
  TestHost host(Device(kVariants[1]));
  const std::pair<std::uint8_t, std::size_t> kSources[] = {{0, 0}, {1, 0}, {3, 2}, {5, 0}, {7, 2}};
  for (const auto& [source, which] : kSources) {
    host.cells("fuses")[0] = static_cast<std::uint8_t>(0xE0 | source);
    ASSERT_EQ(host.Run(kRead), 0);
    EXPECT_EQ(host.vars.quorinibuffer[host.vars.quorinbuflength[0] - kCalibration],
              simulator::SerialPageChip::kCalibration[which])
        << int{source};
  }
}

TEST(SerialPageMemory, BeyondOneTransferIsRefusedBeforeAnythingIsDone) {
  for (const Variant& variant : {kVariants[1], kVariants[4]}) {
    TestHost host(Device(variant));
    host.vars.quorintlength[0] = variant.family == 15 ? 16384 + 33 : 8192 + kEepromBytes + 17;
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
