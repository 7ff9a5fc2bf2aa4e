// Arbitrary text as a file of device profiles: it gives devices that keep the rules, each known by
// its name, whose memories and configuration bytes have their places in the image; or a message
// with its place, and then no device. Neither a message nor a description can command a terminal.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "devices/catalogue/device_catalogue.h"
#include "devices/kinds/device_kind.h"
#include "fuzz/check.h"
#include "shared/utf8.h"

namespace {

using namespace fliglaf;
using fuzz::Require;

void CheckDevice(const DeviceProfile& device) {
  Require(FirstBrokenRule(device) == nullptr, "the rules are kept");
  Require(device.range.first >= 0 && device.range.first <= device.range.last &&
              device.range.last < device.size,
          "the range lies in the device");
  Require(Excerpt(device.description, 200) == device.description,
          "a description is shown as it is");
  const ImageLayout layout = LayoutOf(device);
  const std::int64_t data_end = layout.data_start + layout.data_bytes;
  Require(layout.main_bytes > 0 && layout.main_bytes <= layout.data_start,
          "the main memory ends before the data memory");
  Require(layout.data_bytes >= 0 && data_end <= device.image_bytes,
          "the data memory lies in the image");
  for (const ConfigByte& byte : ConfigBytesOf(device)) {
    Require(byte.image_byte >= layout.main_bytes && byte.image_byte < device.image_bytes &&
                (byte.image_byte < layout.data_start || byte.image_byte >= data_end),
            "a configuration byte lies in the image and in no memory");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  DeviceCatalogue catalogue;
  try {
    catalogue.Add(text, "f");
    Require(!catalogue.all().empty(), "a file has a device");
    for (const DeviceProfile& device : catalogue.all()) {
      CheckDevice(device);
      Require(catalogue.Find(device.name) == &device, "a name belongs to one device");
    }
  } catch (const ProfileError& error) {
    Require(catalogue.all().empty(), "a file is taken whole or not at all");
    const std::string_view message = error.what();
    fuzz::RequirePlace(message, text);
    Require(message.size() < 1000 && Printable(message) == message, "a message can be shown");
  }
  return 0;
}
