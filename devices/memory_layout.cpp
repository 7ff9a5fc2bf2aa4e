#include "devices/memory_layout.h"

namespace fliglaf {
namespace {

/// Words of the image that the word families keep for the configuration bytes.
constexpr std::int32_t kConfigWords = 16;
/// Bytes that family 15 keeps for them.
constexpr std::int32_t kConfigBytes = 32;

/// The data memory right after the main memory.
constexpr MemoryLayout DataAfter(std::int32_t main_bytes, std::int32_t data_bytes) {
  return {.main_bytes = main_bytes, .data_start = main_bytes, .data_bytes = data_bytes};
}

}  // namespace

MemoryLayout LayoutOf(const DeviceProfile& device) {
  switch (device.family) {
    case 2:
      return DataAfter(device.size - device.data_size, device.data_size);
    case 3:  // two bytes of the data memory take the place of a word
      return DataAfter(2 * (device.size - kConfigWords) - device.data_size, device.data_size);
    case 4:
    case 5:
    case 6:
    case 7: {  // a word of the data memory takes the place of one of the flash
      const std::int32_t data_bytes = 2 * device.data_size;
      return DataAfter(2 * (device.size - kConfigWords) - data_bytes, data_bytes);
    }
    case 8:
    case 9:
    case 10:
    case 11: {  // two lock bytes and a page lie between
      const std::int32_t second = device.size - device.data_size;
      return {.main_bytes = second - device.page - 2,
              .data_start = second,
              .data_bytes = device.data_size};
    }
    case 12:
    case 16:  // the lock byte and an unused page lie above
      return DataAfter(device.size - device.page - 1, 0);
    case 13:
    case 14:  // a byte of the data memory takes the place of a word
      return DataAfter(2 * (device.size - kConfigWords - device.data_size), device.data_size);
    case 15:
      return DataAfter(device.size - kConfigBytes, 0);
    default:
      return DataAfter(device.size * device.address_bytes, 0);
  }
}

}  // namespace fliglaf
