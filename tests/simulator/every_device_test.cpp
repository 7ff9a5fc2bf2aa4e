// What holds for devices of every family, end to end: host object, engine, programmer
// on lines, chip.
#include <algorithm>
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shared/text.h"
#include "simulator/chip_file.h"
#include "tests/support/test_host.h"

namespace fliglaf {
namespace {

using test::ConfigByteIn;
using test::RandomBytes;
using test::TestHost;
using testing::HasSubstr;
using testing::StartsWith;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRead = 2, kVerify = 3, kBlank = 4, kCompare = 5, kProgram = 6;

bool IsAvrJtag(const DeviceProfile& device) { return device.family >= 4 && device.family <= 7; }
bool IsTwoWire(const DeviceProfile& device) { return device.family == 12 || device.family == 16; }

/// The device with flash up to `most` bytes, in whole pieces that its family can handle.
DeviceProfile Shortened(DeviceProfile device, std::int64_t most) {
  if (device.family == 3) return device;  // whose size is fixed
  const std::int64_t page = device.page > 0 ? device.page * device.address_bytes : 256;
  const std::int64_t piece = IsAvrJtag(device) ? 16'384 : page;
  const std::int64_t beyond =
      std::max<std::int64_t>(LayoutOf(device).main_bytes - std::max(most, piece), 0);
  const auto addresses = static_cast<std::int32_t>(beyond / piece * piece / device.address_bytes);
  device.size -= addresses;
  device.image_bytes -= addresses * device.address_bytes;
  device.range.last -= addresses;
  return device;
}

/// More than any family fetches at once.
DeviceProfile Medium(const DeviceProfile& device) { return Shortened(device, 16'900); }

DeviceProfile Little(const DeviceProfile& device) { return Shortened(device, 2048); }

/// An image with random bytes where the device has a memory, and with a configuration that is not
/// that of a new part; it locks nothing but a boot section.
Bytes RandomImage(const DeviceProfile& device) {
  const ImageLayout layout = LayoutOf(device);
  Bytes image(static_cast<std::size_t>(device.image_bytes), 0xFF);
  const Bytes random = RandomBytes(image.size(), 31);
  std::copy_n(random.data(), layout.main_bytes, image.data());
  std::copy_n(random.data() + layout.data_start, layout.data_bytes,
              image.data() + layout.data_start);
  for (const ConfigByte& byte : ConfigBytesOf(device)) {
    std::uint8_t& in_image = image[static_cast<std::size_t>(byte.image_byte)];
    if (!byte.name.ends_with("lock")) in_image = 0xAD;
    if (LayoutOf(device).config == ConfigArea::kFuses && byte.name == "lock") in_image = 0xCB;
  }
  test::LeaveOpen(image, device);
  return image;
}

class Host : public TestHost {
 public:
  explicit Host(const DeviceProfile& device, const simulator::Faults& faults = {})
      : TestHost(device, faults), device_(device), image_(RandomImage(device)) {
    SetImage(image_);
  }

  [[nodiscard]] Bytes& wanted() { return image_; }
  [[nodiscard]] std::span<std::uint8_t> data() {
    const auto eeprom = cells("eeprom");
    return eeprom.empty() ? cells("second") : eeprom;
  }
  [[nodiscard]] std::span<const std::uint8_t> wanted_data() const {
    const ImageLayout layout = LayoutOf(device_);
    return std::span(image_).subspan(static_cast<std::size_t>(layout.data_start),
                                     static_cast<std::size_t>(layout.data_bytes));
  }
  /// Puts the image into the chip.
  void Fill() {
    std::copy_n(image_.begin(), cells("flash").size(), cells("flash").begin());
    std::ranges::copy(wanted_data(), data().begin());
  }
  [[nodiscard]] bool Holds() {
    return std::ranges::equal(cells("flash"), std::span(image_).first(cells("flash").size())) &&
           std::ranges::equal(data(), wanted_data());
  }
  /// Whether the configuration that has been read is what it should be.
  [[nodiscard]] bool ImageHoldsConfig() {
    const Bytes read = image();
    return std::ranges::all_of(ConfigBytesOf(device_), [&](const ConfigByte& byte) {
      const auto i = static_cast<std::size_t>(byte.image_byte);
      return !byte.writable || (read[i] & byte.bits) == (image_[i] & byte.bits);
    });
  }
  /// Runs the erase, the programming, and the configuration where there is such an operation.
  int ProgramAll() {
    SetImage(image_);
    const std::uint8_t erase = *device_.operations.erase;
    if (!device_.operations.config) return Run({erase, kProgram});
    return Run({erase, kProgram, *device_.operations.config});
  }
  int Configure() {
    SetImage(image_);
    return Run(*device_.operations.config);
  }
  void CheckSignature(std::uint8_t other = 0) {
    if (!device_.signature) return;
    vars.quorinchipidtestmode[0] = -1;
    vars.quorincompid[0] = (*device_.signature)[0];
    vars.quorintypeid[0] = (*device_.signature)[1] ^ other;
  }
  [[nodiscard]] std::string signature() const {
    const Signature& bytes = device_.signature.value();
    return test::Narrow(u"M" + HexDigits(bytes[0], 2) + u"   D" + HexDigits(bytes[1], 2) +
                        HexDigits(bytes[2], 2));
  }
  /// Empties the log.
  std::string TakeLog() {
    std::string text = log();
    vars.quorinMainRtstr.Set(0, u"");
    return text;
  }

 private:
  DeviceProfile device_;
  Bytes image_;
};

class EveryDevice : public testing::TestWithParam<DeviceProfile> {
 protected:
  const DeviceProfile little_ = Little(GetParam());
};

/// The largest device of each family, and of each choice of fuses that shut the interface; with
/// FLIGLAF_EXTENDED=1 in the environment, all. Configuration words have a mode of their own.
std::vector<DeviceProfile> Devices() {
  const bool all = std::getenv("FLIGLAF_EXTENDED") != nullptr;
  const DeviceCatalogue known = DeviceCatalogue::BuiltIn();
  std::vector<DeviceProfile> devices;
  for (const DeviceProfile& device : known.all()) {
    if (device.config_words > 0) continue;
    const auto like = std::ranges::find_if(devices, [&device](const DeviceProfile& other) {
      return other.family == device.family &&
             ConfigHazardsOf(other).size() == ConfigHazardsOf(device).size();
    });
    if (all || like == devices.end()) {
      devices.push_back(device);
    } else if (device.size > like->size) {
      *like = device;
    }
  }
  return devices;
}
INSTANTIATE_TEST_SUITE_P(Known, EveryDevice, testing::ValuesIn(Devices()), [](const auto& device) {
  std::string name = device.param.name;
  std::ranges::replace(name, '-', '_');
  return name;
});

TEST_P(EveryDevice, RandomImageSurvivesProgramAndRead) {
  const DeviceProfile device = Medium(GetParam());
  Host host(device);
  host.CheckSignature();
  host.vars.quorinwlverifyvcc[0] = 1;
  ASSERT_EQ(host.ProgramAll(), 0) << host.log();
  EXPECT_TRUE(host.Holds());
  if (device.signature) {
    EXPECT_THAT(host.log(), StartsWith(">>" + host.signature() + "\n"));
  }
  EXPECT_THAT(host.log(), HasSubstr(">><Blank Check>\n"));

  host.SetImage(Bytes(host.wanted().size(), 0x55));
  ASSERT_EQ(host.Run(kRead), 0) << host.log();
  const Bytes read = host.image();
  EXPECT_TRUE(
      std::ranges::equal(std::span(read).first(host.cells("flash").size()), host.cells("flash")));
  const auto data_start = static_cast<std::size_t>(LayoutOf(device).data_start);
  EXPECT_TRUE(
      std::ranges::equal(std::span(read).subspan(data_start, host.data().size()), host.data()));
  EXPECT_TRUE(!ReadsConfig(device) || host.ImageHoldsConfig());
}

TEST_P(EveryDevice, OneWrongBitIsFoundAtItsAddress) {
  Host host(little_);
  host.Fill();
  ASSERT_EQ(host.Run(kVerify), 0) << host.log();
  const std::size_t last = host.cells("flash").size() - 1;
  for (const std::size_t address : {std::size_t{0}, last}) {
    std::uint8_t& cell = host.cells("flash")[address];
    cell ^= 0x10;
    host.TakeLog();
    const std::string digits = test::Narrow(HexDigits(static_cast<std::int64_t>(address), 8));
    EXPECT_EQ(host.Run(kVerify), 1);
    EXPECT_THAT(host.TakeLog(), HasSubstr(">>Device Address:" + digits + "H  Device Data:" +
                                          test::Narrow(HexDigits(cell, 2)) + "H"));
    if (address == last) {
      EXPECT_EQ(host.Run(kCompare), 0) << "a compare lists, it does not fail";
      EXPECT_THAT(host.TakeLog(), StartsWith("h1\nh2\n>> " + digits + "H  "));
    }
    cell ^= 0x10;
  }
  for (const std::size_t address : {std::size_t{0}, host.data().size() - 1}) {
    if (host.data().empty()) break;
    host.data()[address] ^= 0x10;
    EXPECT_EQ(host.Run(kVerify), 1) << address;
    host.data()[address] ^= 0x10;
  }
}

TEST_P(EveryDevice, FaultsOfTheBenchAreFound) {
  const auto bit = static_cast<std::uint32_t>(LayoutOf(little_).main_bytes - 3);
  const simulator::StuckBit stuck{bit, 3, (RandomImage(little_)[bit] & 0x08) == 0};
  for (const simulator::Faults& faults :
       std::initializer_list<simulator::Faults>{{.no_chip = true},
                                                {.stuck_bits = {stuck}},
                                                {.answer_stuck = false},
                                                {.answer_stuck = true}}) {
    Host host(little_, faults);
    host.Fill();
    EXPECT_EQ(host.Run(kVerify), 1);
    if (!faults.stuck_bits.empty()) {
      EXPECT_THAT(host.log(), HasSubstr("Device Address:" + test::Narrow(HexDigits(bit, 8)) + "H"));
    }
  }
}

TEST_P(EveryDevice, AnotherSignatureAsks) {
  Host host(little_);
  if (!little_.signature) return;
  host.CheckSignature(0x01);
  std::vector<int> answers{4, 3};  // Retry, then Abort
  host.desktop.on_box = [&](int style, std::u16string_view title, std::u16string_view prompt) {
    EXPECT_EQ(style, 50);
    EXPECT_EQ(title, u"Warning! Device Code Error!");
    EXPECT_EQ(test::Narrow(prompt), host.signature());
    const int answer = answers.front();
    answers.erase(answers.begin());
    return answer;
  };
  host.Run(kBlank);
  EXPECT_TRUE(answers.empty());
  EXPECT_EQ(host.tap.Count("EndRun"), 2U) << "in the check and in the driver";
  EXPECT_EQ(host.tap.Count("SignalFail") + host.tap.Count("SignalPass"), 0U);
}

/// Writes the lock that forbids writing (level 1), then also reading (level 2).
void Lock(Host& host, const DeviceProfile& device, std::size_t level) {
  if (!device.operations.lock.empty()) {
    EXPECT_EQ(host.Run(device.operations.lock[level - 1]), 0) << host.log();
    return;
  }
  const std::string_view first = ConfigBytesOf(device)[0].name;
  if (first == "write-lock") {
    ConfigByteIn(host.wanted(), device, level == 1 ? "write-lock" : "read-lock") = 0xFE;
  } else {
    ConfigByteIn(host.wanted(), device, "lock") = level == 1 ? 0xFE : 0xFC;
  }
  EXPECT_EQ(host.Configure(), 0) << host.log();
}

TEST_P(EveryDevice, LocksForbidAndEraseLifts) {
  Host host(little_);
  if (little_.operations.lock.empty() && !little_.operations.config) return;
  const Bytes open = host.wanted();
  host.Fill();
  Lock(host, little_, 1);
  // The pages that a two-wire part locks can neither be written nor read.
  EXPECT_EQ(host.Run(kVerify), IsTwoWire(little_) ? 1 : 0) << host.log();
  Bytes other = open;
  for (std::uint8_t& byte : other) byte ^= 0xFF;
  host.SetImage(other);
  EXPECT_EQ(host.Run(kProgram), 1) << "nothing may be written";
  EXPECT_EQ(host.cells("flash")[0], open[0]);

  host.SetImage(host.wanted());
  Lock(host, little_, 2);
  EXPECT_EQ(host.Run(kVerify), 1) << "nor be read";
  // Hidden is not blank, but in parts with the AVR's JTAG.
  EXPECT_EQ(host.Run(kBlank), IsAvrJtag(little_) ? 0 : 1);
  host.wanted() = open;
  EXPECT_EQ(host.ProgramAll(), 0) << host.log();
  EXPECT_TRUE(host.Holds());
}

TEST_P(EveryDevice, FusesThatTurnTheInterfaceOffDoSoAtTheNextReset) {
  for (const ConfigHazard& hazard : ConfigHazardsOf(little_)) {
    if (hazard.name == "DWEN") continue;  // the simulated parts have no debug wire
    Host host(little_);
    host.Fill();
    ConfigByteIn(host.wanted(), little_, hazard.byte) ^= static_cast<std::uint8_t>(1 << hazard.bit);
    ASSERT_EQ(host.Configure(), 0) << host.log();
    EXPECT_EQ(host.Run(kVerify), 1) << hazard.name;
  }
}

/// The waits of a profile belong to the times of its part.
TEST_P(EveryDevice, AChipSlowerThanItsProfileIsFound) {
  if (IsTwoWire(little_)) return;  // it is polled
  const bool has_config = LayoutOf(little_).config == ConfigArea::kFuses;
  constexpr std::int32_t ChipTimes::*kTimes[] = {
      &ChipTimes::erase_ms, &ChipTimes::byte_write_us, &ChipTimes::page_write_us,
      &ChipTimes::eeprom_write_us, &ChipTimes::config_write_us};
  for (const auto time : kTimes) {
    DeviceProfile slow = little_;
    if (slow.chip.*time == 0 || (time == kTimes[4] && !has_config)) continue;
    slow.chip.*time *= 500;
    Host host(slow);
    std::ranges::fill(host.cells("flash"), std::uint8_t{0});
    const bool good = host.ProgramAll() == 0 && host.Run(kRead) == 0 && host.Holds() &&
                      (!has_config || host.ImageHoldsConfig());
    EXPECT_FALSE(good) << std::ranges::find(kTimes, time) - kTimes;
  }
}

TEST_P(EveryDevice, AChipFileKeepsItsContents) {
  Host host(little_);
  EXPECT_EQ(simulator::SaveChip(host.bench.chip(), "part").find(": "), std::string::npos)
      << "a new chip has no rows";
  for (const simulator::MemoryArea& area : host.bench.chip().Memory()) {
    for (std::uint8_t& byte : area.bytes) byte &= static_cast<std::uint8_t>(area.largest & 0x2D);
  }
  host.Fill();
  const std::string saved = simulator::SaveChip(host.bench.chip(), "part");
  Host loaded(little_);
  LoadChip(loaded.bench.chip(), "part", saved, "file");
  EXPECT_EQ(simulator::SaveChip(loaded.bench.chip(), "part"), saved);
  EXPECT_TRUE(loaded.Holds());
}

}  // namespace
}  // namespace fliglaf
