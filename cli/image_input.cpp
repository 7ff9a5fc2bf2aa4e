#include "cli/image_input.h"

#include <algorithm>

#include <fmt/format.h>

#include "cli/usage_error.h"
#include "images/image.h"

namespace fliglaf::cli {

std::size_t LoadImage(const Options& options, const DeviceProfile& device,
                      std::span<std::uint8_t> image) {
  const bool whole = !options.image_file.empty();
  const std::filesystem::path& file = whole ? options.image_file : options.memory_file;
  if (file.empty()) {
    throw UsageError(
        fmt::format("{}: name the file with the device's contents", options.command_name));
  }
  const std::size_t room =
      whole ? image.size() : static_cast<std::size_t>(device.size) * device.address_bytes;
  const Image contents = ReadImage(file);
  if (contents.end() > room) {
    const auto beyond = std::ranges::find_if(
        contents.segments, [room](const Segment& segment) { return segment.end() > room; });
    throw UsageError(
        fmt::format("{}: address 0x{:04X} lies outside {}, whose {} goes from 0x0000 to 0x{:04X}",
                    file.string(), std::max<std::uint64_t>(beyond->address, room), device.name,
                    whole ? "image" : "memory", room - 1));
  }
  std::size_t count = 0;
  for (const Segment& segment : contents.segments) {
    std::ranges::copy(segment.bytes, image.begin() + segment.address);
    count += segment.bytes.size();
  }
  return count;
}

}  // namespace fliglaf::cli
