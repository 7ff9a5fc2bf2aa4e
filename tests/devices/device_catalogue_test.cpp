#include "devices/catalogue/device_catalogue.h"

#include <fstream>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fliglaf {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr std::string_view kDefaults = R"([defaults]
family = 14
option = 15
page = 16
description = "a part"
address_bytes = 2
size = 4096
supply = 330
vcc_pins = [10, 30]
gnd_pins = [11]
pin_count = 40
write_time = 15
retries = 3
signature = [1, 2, 3]
lock = [9]
chip = { byte_write_us = 20, erase_ms = 10 }
)";

std::string Device(std::string_view name, std::string_view fields = "") {
  return "[[device]]\nname = \"" + std::string(name) + "\"\n" + std::string(fields);
}

TEST(DeviceCatalogue, DevicesInheritTheDefaultsAndReplaceThem) {
  DeviceCatalogue catalogue;
  catalogue.Add(std::string(kDefaults) + Device("plain") +
                    Device("other",
                           "size = 1024\npage = 8\nrange = [16, 31]\nvcc_pins = [5]\n"
                           "lock = []\nsignature = [4, 5, 0xFE]\nchip.erase_ms = 99\nerased = 0\n"),
                "parts.toml");
  const DeviceProfile* plain = catalogue.Find("plain");
  ASSERT_NE(plain, nullptr);
  EXPECT_EQ(plain->family, 14);
  EXPECT_EQ(plain->supply, 330);
  EXPECT_EQ(plain->image_bytes, 8192) << "two bytes at each address";
  EXPECT_EQ(plain->range, (AddressRange{0, 4095}));
  EXPECT_THAT(plain->vcc_pins, ElementsAre(10, 30));
  EXPECT_EQ(plain->chip.erase_ms, 10);
  EXPECT_EQ(plain->erased, 0xFF);

  const DeviceProfile* other = catalogue.Find("OTHER");
  ASSERT_NE(other, nullptr);
  EXPECT_EQ(other->image_bytes, 2048);
  EXPECT_EQ(other->page, 8);
  EXPECT_EQ(other->range, (AddressRange{16, 31}));
  EXPECT_THAT(other->vcc_pins, ElementsAre(5));
  EXPECT_THAT(other->operations.lock, IsEmpty());
  EXPECT_EQ(other->signature, (Signature{4, 5, 0xFE}));
  EXPECT_EQ(other->chip.erase_ms, 99);
  EXPECT_EQ(other->chip.byte_write_us, 20) << "the times beside a replaced one are inherited";
  EXPECT_EQ(other->erased, 0x00);
}

TEST(DeviceCatalogue, NearestNamesAreThoseThatMayBeMeant) {
  DeviceCatalogue catalogue;
  std::string file(kDefaults);
  for (const auto* name : {"isp51-4k", "isp51-8k", "mega16", "isp51-12k", "isp51-20k"}) {
    file += Device(name);
  }
  catalogue.Add(file, "parts.toml");
  EXPECT_THAT(catalogue.NearestNames("ISP-8K"), ElementsAre("isp51-8k"));
  EXPECT_THAT(catalogue.NearestNames("isp51-4"), ElementsAre("isp51-4k", "isp51-8k", "isp51-12k"));
  EXPECT_THAT(catalogue.NearestNames("12k"), ElementsAre("isp51-12k"));
  EXPECT_THAT(catalogue.NearestNames("mgea16"), ElementsAre("mega16"));
  EXPECT_THAT(catalogue.NearestNames("z80"), IsEmpty());
  EXPECT_THAT(catalogue.NearestNames("mega16-with-a-long-tail"), IsEmpty());
  EXPECT_THAT(catalogue.NearestNames(""), IsEmpty());
}

class Folder : public ::testing::Test {
 protected:
  void SetUp() override { std::filesystem::create_directories(path_ / "sub.toml"); }
  void TearDown() override { std::filesystem::remove_all(path_); }

  void Write(const std::string& file, const std::string& text) const {
    std::ofstream(path_ / file) << text;
  }

  /// What AddFolder says; the catalogue has to be as it was before.
  std::string Refusal(DeviceCatalogue& catalogue) const {
    const std::size_t before = catalogue.all().size();
    try {
      catalogue.AddFolder(path_);
    } catch (const ProfileError& error) {
      EXPECT_EQ(catalogue.all().size(), before);
      return error.what();
    }
    return "the folder was taken";
  }

  const std::filesystem::path path_ =
      std::filesystem::path(::testing::TempDir()) / ("devices_test_" + std::to_string(getpid()));
};

TEST_F(Folder, AddsItsProfilesByFileName) {
  for (const std::string name : {"c", "a", "d", "b"}) {
    Write(name + ".toml", std::string(kDefaults) + Device(name));
  }
  Write("notes.txt", "no profile");
  DeviceCatalogue catalogue = DeviceCatalogue::BuiltIn();
  const std::size_t built_in = catalogue.all().size();
  catalogue.AddFolder(path_);
  std::string added;
  for (const DeviceProfile& device : catalogue.all().subspan(built_in)) added += device.name;
  EXPECT_EQ(added, "abcd");
  EXPECT_EQ(catalogue.Find("b")->source, (path_ / "b.toml").string() + ":18");
}

TEST_F(Folder, IsTakenAsAWholeOrNotAtAll) {
  DeviceCatalogue catalogue;
  EXPECT_THAT(Refusal(catalogue), HasSubstr("holds no device profile"));
  Write("a.toml", std::string(kDefaults) + Device("twice"));
  Write("b.toml", std::string(kDefaults) + Device("single") + Device("Twice"));
  const std::string refusal = Refusal(catalogue);
  EXPECT_THAT(refusal, HasSubstr("b.toml:20: the name 'Twice' is already used"));
  EXPECT_THAT(refusal, HasSubstr("a.toml:18"));
  Write("a.toml", std::string(kDefaults) + Device("twice") + Device("TWICE"));
  EXPECT_THAT(Refusal(catalogue), HasSubstr("a.toml:20: the name 'TWICE' is already used"));
  Write("a.toml", std::string(kDefaults) + Device("twice"));
  std::filesystem::create_symlink(path_ / "gone", path_ / "aa.toml");
  EXPECT_THAT(Refusal(catalogue), HasSubstr("aa.toml: the device profile cannot be read"));
  std::filesystem::create_symlink("/dev/zero", path_ / "a\x1B.toml");
  EXPECT_THAT(Refusal(catalogue), HasSubstr("a\uFFFD.toml: not a regular file"));
  Write("a\x1A.toml", "");
  std::filesystem::resize_file(path_ / "a\x1A.toml", (1 << 20) + 1);
  EXPECT_THAT(Refusal(catalogue), HasSubstr(".toml: larger than 1 MiB, the most that is read"));
  std::filesystem::remove_all(path_);
  EXPECT_THAT(Refusal(catalogue), HasSubstr("No such file"));
}

}  // namespace
}  // namespace fliglaf
