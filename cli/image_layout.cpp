#include "cli/image_layout.h"

#include <algorithm>

namespace fliglaf::cli {
namespace {

/// Addresses that the configuration bytes take at the end of an image.
constexpr int kConfigurationAddresses = 16;
constexpr int kConfigurationBytes = 32;

/// Where family 3 has the data memory, whatever the size of the program memory.
constexpr int kFam3DataFirst = 0x400;

/// Program memory of `main` bytes, `data` bytes from `first` on.
ImageLayout Layout(int main, int first, int data) {
  const auto size = [](int bytes) { return static_cast<std::size_t>(std::max(bytes, 0)); };
  return {.main = {.first = 0, .bytes = size(main)},
          .data = {.first = size(first), .bytes = size(data)}};
}

}  // namespace

ImageLayout LayoutOf(const DeviceProfile& device) {
  const int size = device.size;
  const int data = device.data_size;
  switch (device.family) {
    case 2:
      return Layout(size - data, size - data, data);
    case 3:
      return Layout(2 * (size - kConfigurationAddresses) - data, kFam3DataFirst, data);
    case 13:
    case 14: {
      const int main = 2 * (size - data - kConfigurationAddresses);
      return Layout(main, main, data);
    }
    case 15:
      return Layout(size - kConfigurationBytes, 0, 0);
    default:
      return Layout(size * device.address_bytes, 0, 0);
  }
}

}  // namespace fliglaf::cli
