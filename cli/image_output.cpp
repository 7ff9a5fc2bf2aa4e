#include "cli/image_output.h"

#include <algorithm>

#include <fmt/format.h>

#include "cli/attempt.h"
#include "cli/usage_error.h"
#include "devices/memory_layout.h"

namespace fliglaf::cli {

ImageOutput::ImageOutput(const Options& options, const DeviceProfile& device) {
  const ImageLayout layout = LayoutOf(device);
  if (!options.eeprom_file.empty() && layout.data_bytes == 0) {
    throw UsageError(device.name + " has no data memory for --eeprom");
  }
  Add(options.output, 0, layout.main_bytes);
  Add(options.eeprom_file, layout.data_start, layout.data_bytes);
  Add(options.image_file, 0, device.image_bytes);
  if (files_.empty()) {
    throw UsageError(options.command_name +
                     ": name the file to write with -o, --eeprom or --image");
  }
}

void ImageOutput::Add(const std::filesystem::path& path, std::int64_t start, std::int64_t bytes) {
  if (path.empty()) return;
  const auto format = FormatOfName(path);
  if (!format) {
    throw UsageError(fmt::format("{}: the ending of the file's name tells its format: {}",
                                 path.string(), KnownEndings()));
  }
  CheckWritable(path);
  files_.push_back({.path = path, .format = *format, .start = start, .bytes = bytes});
}

std::span<const std::uint8_t> ImageOutput::Part(const File& file,
                                                std::span<const std::uint8_t> image) {
  return image.subspan(static_cast<std::size_t>(file.start), static_cast<std::size_t>(file.bytes));
}

std::string ImageOutput::Write(std::span<const std::uint8_t> image, Report& report) const {
  std::string names;
  for (const File& file : files_) {
    Attempt(report.unwritten, [&] {
      const auto part = Part(file, image);
      WriteImage(file.path, file.format, part);
      report.bytes += part.size();
      names += (names.empty() ? "" : ", ") + file.path.string();
    });
  }
  return names;
}

std::optional<std::uint8_t> ImageOutput::OneValue(std::span<const std::uint8_t> image) const {
  const std::uint8_t first = Part(files_.front(), image).front();
  const bool all = std::ranges::all_of(files_, [&](const File& file) {
    return std::ranges::all_of(Part(file, image), [first](std::uint8_t b) { return b == first; });
  });
  return all ? std::optional(first) : std::nullopt;
}

}  // namespace fliglaf::cli
