#include "cli/image_output.h"

#include <fmt/format.h>

#include "cli/usage_error.h"
#include "devices/memory_layout.h"

namespace fliglaf::cli {

ImageOutput::ImageOutput(const Options& options, const DeviceProfile& device) {
  const MemoryLayout layout = LayoutOf(device);
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

void ImageOutput::Add(const std::filesystem::path& path, std::int32_t start, std::int32_t bytes) {
  if (path.empty()) return;
  const auto format = FormatOfName(path);
  if (!format) {
    throw UsageError(fmt::format("{}: the ending of the file's name tells its format: {}",
                                 path.string(), KnownEndings()));
  }
  CheckWritable(path);
  files_.push_back({.path = path, .format = *format, .start = start, .bytes = bytes});
}

std::size_t ImageOutput::Write(std::span<const std::uint8_t> image) const {
  std::size_t bytes = 0;
  for (const File& file : files_) {
    const auto size = static_cast<std::size_t>(file.bytes);
    WriteImage(file.path, file.format, image.subspan(static_cast<std::size_t>(file.start), size));
    bytes += size;
  }
  return bytes;
}

std::string ImageOutput::names() const {
  std::string names;
  for (const File& file : files_) names += (names.empty() ? "" : ", ") + file.path.string();
  return names;
}

}  // namespace fliglaf::cli
