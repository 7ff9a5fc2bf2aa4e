#include "cli/image_output.h"

#include <fmt/format.h>

#include "cli/usage_error.h"

namespace fliglaf::cli {

ImageOutput::ImageOutput(const Options& options, const DeviceProfile& device) {
  const ImageLayout layout = LayoutOf(device);
  if (!options.eeprom_file.empty() && layout.data.bytes == 0) {
    throw UsageError(device.name + " has no data memory for --eeprom");
  }
  Add(options.output, layout.main);
  Add(options.eeprom_file, layout.data);
  Add(options.image_file, {.first = 0, .bytes = static_cast<std::size_t>(device.image_bytes)});
  if (files_.empty()) {
    throw UsageError(options.command_name +
                     ": name the file to write with -o, --eeprom or --image");
  }
}

void ImageOutput::Add(const std::filesystem::path& path, const ImageArea& area) {
  if (path.empty()) return;
  const auto format = FormatOfName(path);
  if (!format) {
    throw UsageError(fmt::format("{}: the ending of the file's name tells its format: {}",
                                 path.string(), KnownEndings()));
  }
  CheckWritable(path);
  files_.push_back({.path = path, .format = *format, .area = area});
}

std::size_t ImageOutput::Write(std::span<const std::uint8_t> image) const {
  std::size_t bytes = 0;
  for (const File& file : files_) {
    WriteImage(file.path, file.format, image.subspan(file.area.first, file.area.bytes));
    bytes += file.area.bytes;
  }
  return bytes;
}

std::string ImageOutput::names() const {
  std::string names;
  for (const File& file : files_) names += (names.empty() ? "" : ", ") + file.path.string();
  return names;
}

}  // namespace fliglaf::cli
