// What has to hold for every device that the program brings along.

#include <algorithm>

#include <gtest/gtest.h>

#include "devices/catalogue/device_catalogue.h"
#include "devices/kinds/device_kind.h"

namespace fliglaf {
namespace {

// What takes no time hides a wait that is too short: the simulated chip must have the times of its
// part.
TEST(BuiltInProfiles, HaveTheTimesOfTheirParts) {
  const DeviceCatalogue catalogue = DeviceCatalogue::BuiltIn();
  ASSERT_FALSE(catalogue.all().empty());
  for (const DeviceProfile& device : catalogue.all()) {
    SCOPED_TRACE(device.source + " " + device.name);
    if (device.config_words > 0) {
      EXPECT_GE(device.write_time, device.chip.config_write_us);
      EXPECT_GT(device.chip.config_write_us, 0);
      continue;
    }
    const ImageLayout layout = LayoutOf(device);
    const bool fuses =
        layout.config == ConfigArea::kFuses || layout.config == ConfigArea::kFuseAndLock;
    EXPECT_GT(device.chip.erase_ms, 0);
    EXPECT_GT(std::max(device.chip.byte_write_us, device.chip.page_write_us), 0);
    EXPECT_EQ(fuses, device.chip.config_write_us > 0);
    EXPECT_TRUE(layout.config == ConfigArea::kBlockLocks || layout.data_bytes == 0 ||
                device.chip.eeprom_write_us > 0);
    EXPECT_TRUE((device.family != 1 && device.family != 3) || device.chip.lock_write_ms > 0);
  }
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
