// What has to hold for every device that the program brings along.

#include <gtest/gtest.h>

#include "devices/catalogue/device_catalogue.h"

namespace fliglaf {
namespace {

template <typename Check>
void ForFamily(int family, Check check) {
  int devices = 0;
  const DeviceCatalogue catalogue = DeviceCatalogue::BuiltIn();
  for (const DeviceProfile& device : catalogue.all()) {
    if (device.family != family) continue;
    SCOPED_TRACE(device.source + " " + device.name);
    check(device);
    ++devices;
  }
  EXPECT_GT(devices, 0);
}

// Nothing polls these parts: a wait that is too short leaves the next byte, page or blank check to
// a busy chip.
TEST(BuiltInProfiles, Family1WaitsAsLongAsItsPartsTake) {
  ForFamily(1, [](const DeviceProfile& device) {
    if (device.config_words > 0) {
      EXPECT_GE(device.write_time, device.chip.config_write_us);
      return;
    }
    ASSERT_GT(device.chip.byte_write_us, 0);
    ASSERT_GT(device.chip.erase_ms, 0);
    ASSERT_GT(device.chip.lock_write_ms, 0);
    EXPECT_GE(10 * device.write_time, device.chip.byte_write_us);
    EXPECT_GE(40 * device.write_time, device.chip.erase_ms);
    EXPECT_GE(40 * device.write_time, device.chip.lock_write_ms);
  });
}

TEST(BuiltInProfiles, ByteFamiliesWaitAsLongAsTheirPartsTake) {
  for (const int family : {2, 3}) {
    ForFamily(family, [](const DeviceProfile& device) {
      ASSERT_GT(device.chip.byte_write_us, 0);
      ASSERT_GT(device.chip.eeprom_write_us, 0);
      ASSERT_GT(device.chip.erase_ms, 0);
      EXPECT_GE(device.write_time, device.chip.byte_write_us);
      EXPECT_GE(device.write_time, device.chip.eeprom_write_us);
      EXPECT_GE(10 * device.write_time, 1000 * device.chip.erase_ms);
    });
  }
}

TEST(BuiltInProfiles, PageFamiliesWaitAsLongAsTheirPartsTake) {
  for (const int family : {13, 14, 15}) {
    ForFamily(family, [family](const DeviceProfile& device) {
      ASSERT_GT(device.chip.page_write_us, 0);
      ASSERT_GT(device.chip.erase_ms, 0);
      EXPECT_GE(device.write_time, device.chip.page_write_us);
      EXPECT_GE(2 * device.write_time, 1000 * device.chip.erase_ms);
      EXPECT_GT(device.chip.config_write_us, 0);
      if (family == 15) return;  // nothing waits after its configuration, and it has no EEPROM
      EXPECT_GE(device.write_time, device.chip.config_write_us);
      ASSERT_GT(device.chip.eeprom_write_us, 0);
      EXPECT_GE((family == 13 ? 2 : 1) * device.write_time, device.chip.eeprom_write_us);
    });
  }
}

TEST(BuiltInProfiles, Family1CanBeIdentifiedErasedAndLocked) {
  ForFamily(1, [](const DeviceProfile& device) {
    if (device.config_words > 0) return;  // written over the parallel port only
    ASSERT_TRUE(device.signature);
    EXPECT_NE((*device.signature)[signature_byte::kMaker], 0);
    EXPECT_EQ(device.operations.erase, 11);
    EXPECT_EQ(device.operations.lock, (std::vector<std::uint8_t>{8, 9, 10}));
    EXPECT_LE(device.vcc_pins[0], device.pin_count);
    EXPECT_LE(device.gnd_pins[0], device.pin_count);
  });
}

// Two parts of one signature could be taken for one another in the socket.
TEST(BuiltInProfiles, SignaturesTellTheDevicesOfAFamilyApart) {
  const DeviceCatalogue catalogue = DeviceCatalogue::BuiltIn();
  for (const DeviceProfile& one : catalogue.all()) {
    for (const DeviceProfile& other : catalogue.all()) {
      if (&one == &other || one.family != other.family || !one.signature) continue;
      EXPECT_NE(one.signature, other.signature) << one.name << " and " << other.name;
    }
  }
}

}  // namespace
}  // namespace fliglaf
