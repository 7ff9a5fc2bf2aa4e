// Families 2 and 3, written byte by byte: stops and failures, ranges and sizes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::RandomBytes;
using test::Tap;
using test::TestHost;
using testing::HasSubstr;
using testing::StartsWith;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRead = 2, kVerify = 3, kBlank = 4, kProgram = 6;
constexpr std::uint8_t kNoReading = 9;  // a lock operation of both families

DeviceProfile Fam2(std::int32_t flash_bytes, std::int16_t eeprom_bytes) {
  DeviceProfile device = test::Sized("isp51ee-8k", flash_bytes + eeprom_bytes);
  device.data_size = eeprom_bytes;
  return device;
}

/// An image that writes little.
Bytes FewBytes(std::size_t image_bytes, std::initializer_list<std::size_t> written) {
  Bytes image(image_bytes, 0xFF);
  for (const std::size_t address : written) image[address] = static_cast<std::uint8_t>(address * 7);
  return image;
}

/// What the chip's memories hold, as the image has them.
Bytes Cells(TestHost& host) {
  Bytes bytes = host.flash();
  const auto eeprom = host.cells("eeprom");
  bytes.insert(bytes.end(), eeprom.begin(), eeprom.end());
  return bytes;
}

/// How many blocks the run fetched, and how many bytes it handed over.
using Counts = std::pair<std::size_t, std::size_t>;
Counts CountsOf(const TestHost& host) {
  return {host.tap.Count("usbbulkread"), host.tap.Count("BlockTransfer")};
}
Counts Read(TestHost& host) {
  host.tap.calls.clear();
  host.Run(kRead);
  return CountsOf(host);
}

struct Part {
  DeviceProfile device;
  Bytes few_bytes;  ///< of both memories
};

void PrintTo(const Part& part, std::ostream* out) { *out << part.device.name; }

const Part kFamily2{.device = Fam2(1280, 300),
                    .few_bytes = FewBytes(1580, {1, 2, 1279, 1280, 1579})};
const Part kFamily3{.device = test::Known("isp-word-1k"),
                    .few_bytes = FewBytes(1120, {2, 3, 512, 1023, 1025, 1087})};

class IspByte : public testing::TestWithParam<Part> {
 protected:
  IspByte() { host_.SetImage(GetParam().few_bytes); }

  [[nodiscard]] bool Holds(Bytes image) {
    image.resize(memory_bytes_);
    return Cells(host_) == image;
  }

  const DeviceProfile& device_ = GetParam().device;
  const ImageLayout layout_ = LayoutOf(device_);
  const std::size_t flash_bytes_ = static_cast<std::size_t>(layout_.main_bytes);
  const std::size_t memory_bytes_ = flash_bytes_ + static_cast<std::size_t>(layout_.data_bytes);
  TestHost host_{device_};
};
INSTANTIATE_TEST_SUITE_P(Parts, IspByte, testing::Values(kFamily2, kFamily3));

/// A stop while writing is noticed by the verify that follows; one while a block is fetched ends
/// the pass before it is handed over.
TEST_P(IspByte, StopEndsThePassAtItsNextFetch) {
  const auto stop_at = [&](std::uint8_t code, std::string_view operation, std::size_t nth) {
    host_.tap.calls.clear();
    host_.tap.before = [this, operation, nth](const Tap::Call& call) mutable {
      if (call.operation == operation && --nth == 0) host_.vars.quorinprgresult[0] = 2;
      return true;
    };
    EXPECT_EQ(host_.Run(code), 2);
    EXPECT_THAT(host_.log(), HasSubstr("stopped\n"));
    EXPECT_EQ(host_.tap.Count("SignalFail"), 1U);
    EXPECT_EQ(host_.tap.calls.back().operation, "EndRun");
    return CountsOf(host_);
  };
  EXPECT_EQ(stop_at(kProgram, "QueueDelay", 2), Counts(1, 0));
  EXPECT_TRUE(Holds(GetParam().few_bytes)) << "the writing goes on to its end";
  EXPECT_THAT(host_.log(), HasSubstr(">><Verify>\nstopped\n"));
  EXPECT_EQ(stop_at(kRead, "usbbulkread", 1), Counts(1, 0));
  EXPECT_EQ(stop_at(kRead, "usbbulkread", 2), Counts(2, flash_bytes_));
}

TEST_P(IspByte, AFailedFetchIsHandedOverAndJudged) {
  const simulator::FaultPlan faults{{{simulator::Fault::kFailedTransfer, Op::kUsbBulkRead}}};
  TestHost host(device_, {.programmer = faults});
  host.SetImage(GetParam().few_bytes);
  EXPECT_EQ(host.Run(kVerify), 1) << "what was left in the buffer is not the image";
  EXPECT_EQ(Read(host), Counts(2, memory_bytes_)) << "nothing is repeated";
}

TEST(IspFam2Range, IsClippedToBothMemories) {
  const DeviceProfile device = Fam2(4096, 256);
  TestHost host(device);
  const Bytes image = RandomBytes(4096 + 256, 32);
  host.SetImage(image);
  host.vars.quorinwltbigendbuf[0] = 0xFF0;
  host.vars.quorinwltbigendbuf[1] = 0x100F;
  ASSERT_EQ(host.Run(kProgram), 0) << host.log();
  Bytes expected(image.size(), 0xFF);
  std::copy_n(image.begin() + 0xFF0, 0x20, expected.begin() + 0xFF0);
  EXPECT_EQ(Cells(host), expected);

  const auto fetches = [&](std::int32_t first, std::int32_t last) {
    host.vars.quorinwltbigendbuf[0] = first;
    host.vars.quorinwltbigendbuf[1] = last;
    return Read(host);
  };
  EXPECT_EQ(fetches(0x10, 0xFFF), Counts(1, 0xFF0));   // code memory alone
  EXPECT_EQ(fetches(0x1080, 0x10FF), Counts(1, 128));  // EEPROM alone
  EXPECT_EQ(fetches(0xFFF, 0x7FFF), Counts(2, 1 + 256));
  EXPECT_EQ(fetches(0x20, 0x1F), Counts(0, 0));
}

TEST(IspFam2Range, LongMemoriesAreReadInBlocksAndWrittenByTheKilobyte) {
  constexpr std::int32_t kCode = 16'384 + 8192;  // more than 13 address bits: it wraps around
  const DeviceProfile device = Fam2(kCode, 2048);
  TestHost host(device, [](const DeviceProfile&, const simulator::Clock& clock) {
    const DeviceProfile& part = test::Known("isp51ee-8k");
    return KindOf(part).make_part(part, clock);
  });
  const Bytes image = RandomBytes(kCode + 2048, 33);
  host.SetImage(image);
  host.vars.quorinwltbigendbuf[0] = kCode - 2192;
  ASSERT_EQ(host.Run(kProgram), 0) << host.log();
  EXPECT_EQ(host.tap.Count("FlushQueue"), 2U + 2U + 1U + 3U) << "kilobytes, the rest, the verify";
  const Bytes cells = Cells(host);
  EXPECT_TRUE(
      std::ranges::equal(std::span(cells).last(2192 + 2048), std::span(image).last(2192 + 2048)));

  host.vars.quorinwltbigendbuf[0] = 0;
  EXPECT_EQ(Read(host), Counts(3, kCode + 2048));
  const Bytes read = host.image();
  const Bytes flash = host.flash();
  for (std::size_t i = 0; i < kCode; ++i) ASSERT_EQ(read[i], flash[i % 8192]) << i;
}

TEST(IspByteSignature, Family2HasNoneAndFamily3HidesItWhenLocked) {
  for (const DeviceProfile& device : {Fam2(256, 16), test::Known("isp-word-1k")}) {
    TestHost host(device);
    host.vars.quorinchipidtestmode[0] = -1;
    host.vars.quorincompid[0] = 0x1E;
    host.vars.quorintypeid[0] = 0x90;
    int boxes = 0;
    host.desktop.on_box = [&](int, std::u16string_view, std::u16string_view prompt) {
      EXPECT_EQ(prompt, u"M00   D0000");
      ++boxes;
      return 5;  // Ignore
    };
    const bool has_one = device.family == 3;
    EXPECT_EQ(host.Run(kNoReading), 0);
    EXPECT_THAT(host.log(), StartsWith(has_one ? ">>M1E   D9001\n>><op9>" : ">><op9>"));
    EXPECT_EQ(host.Run(kBlank), 1);
    EXPECT_EQ(boxes, has_one ? 1 : 0);
  }
}

TEST(IspFam3Program, SendsOnlyWhatIsNotErasedFromTheRangeOn) {
  const DeviceProfile& device = test::Known("isp-word-1k");
  TestHost host(device);
  const auto written = [&] {
    return std::ranges::count_if(host.tap.calls, [&](const Tap::Call& call) {
      return call.operation == "QueueDelay" && call.value == device.write_time;
    });
  };
  host.SetImage(Bytes(1120, 0xFF));
  EXPECT_EQ(host.Run(kProgram), 0);
  EXPECT_EQ(written(), 0);

  host.SetImage(FewBytes(1120, {2, 1025, 1026, 1027}));
  host.vars.quorinwltbigendbuf[0] = 2;  // leaves out EEPROM bytes 0 and 1, and no word
  EXPECT_EQ(host.Run(kProgram), 1) << "the verify covers all of it";
  EXPECT_EQ(written(), 3);
  EXPECT_THAT(host.log(), HasSubstr("Device Address:00000401H"));
}

TEST(IspFam3Sizes, HalfAWordGoesToTheEvenNeighbour) {
  TestHost host("isp-word-1k");
  const auto handed_over = [&](std::int32_t size, std::int16_t eeprom) {
    host.vars.quorintlength[0] = size;
    host.vars.quorinbvcch[0] = eeprom;
    return Read(host);
  };
  EXPECT_EQ(handed_over(40, 5), Counts(2, 2 * 22 + 5));  // 21.5 words are 22
  EXPECT_EQ(handed_over(40, 7), Counts(2, 2 * 20 + 7));  // 20.5 words are 20
  EXPECT_EQ(handed_over(41, 5), Counts(2, 2 * 22 + 5));  // 22.5 words are 22
  EXPECT_EQ(handed_over(40, 0), Counts(1, 2 * 24));
  EXPECT_EQ(handed_over(16 + 8193, 0), Counts(0, 0)) << "more than one block brings back";
  EXPECT_THAT(host.log(), HasSubstr("16384 bytes at most"));
}

}  // namespace
}  // namespace fliglaf
