#include "cli/image_input.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "cli/usage_error.h"
#include "devices/memory_layout.h"
#include "images/image.h"

namespace fliglaf::cli {
namespace {

/// Reads `file` into `memory`, whose addresses count from 0; `what` and `device` name it in
/// messages.
std::size_t LoadMemory(const std::filesystem::path& file, std::span<std::uint8_t> memory,
                       std::string_view what, const std::string& device) {
  const Image contents = ReadImage(file);
  if (contents.end() > memory.size()) {
    const auto beyond = std::ranges::find_if(contents.segments, [memory](const Segment& segment) {
      return segment.end() > memory.size();
    });
    throw UsageError(
        fmt::format("{}: address 0x{:04X} lies outside {}, whose {} goes from 0x0000 to 0x{:04X}",
                    file.string(), std::max<std::uint64_t>(beyond->address, memory.size()), device,
                    what, memory.size() - 1));
  }
  std::size_t count = 0;
  for (const Segment& segment : contents.segments) {
    std::ranges::copy(segment.bytes, memory.begin() + segment.address);
    count += segment.bytes.size();
  }
  return count;
}

std::span<std::uint8_t> Part(std::span<std::uint8_t> image, std::int32_t start,
                             std::int32_t bytes) {
  return image.subspan(static_cast<std::size_t>(start), static_cast<std::size_t>(bytes));
}

}  // namespace

std::size_t LoadImage(const Options& options, const DeviceProfile& device,
                      std::span<std::uint8_t> image) {
  if (!options.image_file.empty()) {
    return LoadMemory(options.image_file, image, "image", device.name);
  }
  const MemoryLayout layout = LayoutOf(device);
  std::size_t count = 0;
  if (!options.eeprom_file.empty()) {
    if (layout.data_bytes == 0) throw UsageError(device.name + " has no data memory for --eeprom");
    count += LoadMemory(options.eeprom_file, Part(image, layout.data_start, layout.data_bytes),
                        "data memory", device.name);
  } else if (options.memory_file.empty()) {
    throw UsageError(
        fmt::format("{}: name the file with the device's contents", options.command_name));
  }
  if (!options.memory_file.empty()) {
    count +=
        LoadMemory(options.memory_file, Part(image, 0, layout.main_bytes), "memory", device.name);
  }
  return count;
}

}  // namespace fliglaf::cli
