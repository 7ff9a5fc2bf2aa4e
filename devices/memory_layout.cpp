#include "devices/memory_layout.h"

namespace fliglaf {

ImageLayout LayoutOf(const DeviceProfile& device) {
  if (device.config_words > 0) {  // a programming mode, not a family
    const std::int64_t bytes = std::int64_t{device.size} * device.address_bytes;
    return {.main_bytes = bytes, .data_start = bytes};
  }
  return LayoutOf(device.family,
                  {.size = device.size, .data_size = device.data_size, .page = device.page});
}

}  // namespace fliglaf
