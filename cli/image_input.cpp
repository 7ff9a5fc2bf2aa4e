#include "cli/image_input.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "cli/usage_error.h"
#include "devices/memory_layout.h"

namespace fliglaf::cli {

ImageInput::ImageInput(const Options& options, const DeviceProfile& device)
    : layout_(LayoutOf(device)), image_bytes_(device.image_bytes) {
  const auto& [main_bytes, data_start, data_bytes, config, config_start] = layout_;
  if (!options.image_file.empty()) {
    Add(options.image_file, 0, device.image_bytes, "image", device.name);
  }
  if (!options.memory_file.empty()) {
    Add(options.memory_file, 0, main_bytes, "memory", device.name);
  }
  if (!options.eeprom_file.empty()) {
    if (data_bytes == 0) throw UsageError(device.name + " has no data memory for --eeprom");
    Add(options.eeprom_file, data_start, data_bytes, "data memory", device.name);
  }
  if (segments_.empty()) {
    throw UsageError(
        fmt::format("{}: name the file with the device's contents", options.command_name));
  }
  const auto main = Within(0, main_bytes);
  const auto data = Within(data_start, data_start + data_bytes);
  for (const auto& memory : {main, data}) {
    for (const auto& [first, end] : memory) bytes_ += static_cast<std::size_t>(end - first);
  }
  has_main_ = !main.empty();
  has_data_ = !data.empty();
}

/// Takes a file whose addresses count from `start` of the image; `what` and `device` name the
/// memory in messages.
void ImageInput::Add(const std::filesystem::path& file, std::int64_t start, std::int64_t bytes,
                     std::string_view what, const std::string& device) {
  const auto size = static_cast<std::uint64_t>(bytes);
  for (Segment& segment : ReadImage(file).segments) {
    if (segment.end() > size) {
      throw UsageError(fmt::format(
          "{}: address 0x{:04X} lies outside {}, whose {} goes from 0x0000 to 0x{:04X}",
          file.string(), std::max<std::uint64_t>(segment.address, size), device, what, size - 1));
    }
    segment.address += static_cast<std::uint32_t>(start);
    segments_.push_back(std::move(segment));
  }
}

void ImageInput::CopyTo(std::span<std::uint8_t> image) const {
  for (const Segment& segment : segments_) {
    std::ranges::copy(segment.bytes, image.begin() + segment.address);
  }
}

std::vector<ImageInput::Range> ImageInput::Within(std::int64_t start, std::int64_t end) const {
  std::vector<Range> found;
  for (const Segment& segment : segments_) {
    const Range range{std::max<std::uint64_t>(segment.address, static_cast<std::uint64_t>(start)),
                      std::min(segment.end(), static_cast<std::uint64_t>(end))};
    if (range.end > range.first) found.push_back(range);
  }
  return found;
}

bool ImageInput::is_whole() const {
  return bytes_ == static_cast<std::size_t>(layout_.main_bytes + layout_.data_bytes);
}

std::string ImageInput::others() const {
  std::vector<std::string> ranges;
  const auto add = [&](std::int64_t start, std::int64_t end) {
    for (const auto& [first, behind] : Within(start, end)) {
      ranges.push_back(fmt::format("0x{:04X} to 0x{:04X}", first, behind - 1));
    }
  };
  add(layout_.main_bytes, layout_.data_start);
  add(layout_.data_start + layout_.data_bytes, image_bytes_);
  return fmt::format("{}", fmt::join(ranges, ", "));
}

}  // namespace fliglaf::cli
