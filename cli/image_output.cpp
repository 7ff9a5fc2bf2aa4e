#include "cli/image_output.h"

#include <algorithm>

#include <fmt/format.h>

#include "cli/attempt.h"
#include "cli/parse_options.h"
#include "cli/usage_error.h"
#include "devices/kinds/device_kind.h"

namespace fliglaf::cli {

ImageOutput::ImageOutput(const ImageFiles& files, const DeviceProfile& device) {
  const ImageLayout layout = LayoutOf(device);
  const Area main{.start = 0, .bytes = layout.main_bytes};
  const Area data{.start = layout.data_start, .bytes = layout.data_bytes};
  if (!files.eeprom.empty() && layout.data_bytes == 0) {
    throw UsageError(device.name + " has no data memory for --eeprom");
  }
  Add(files.memory, main);
  Add(files.eeprom, data);
  Add(files.image, {.start = 0, .bytes = device.image_bytes});
  if (files_.empty()) {
    throw UsageError("read: name the file to write, with --output, --eeprom or --image",
                     SeeHelp("read"));
  }
  if (!files.memory.empty() || !files.image.empty()) memories_.push_back(main);
  const bool has_data = layout.data_bytes > 0;
  if (has_data && (!files.eeprom.empty() || !files.image.empty())) memories_.push_back(data);
}

void ImageOutput::Add(const std::filesystem::path& path, const Area& area) {
  if (path.empty()) return;
  const auto format = FormatOfName(path);
  if (!format) {
    throw UsageError(fmt::format("{}: the name must end in {}", path.string(), KnownEndings()));
  }
  CheckWritable(path);
  files_.push_back({.path = path, .format = *format, .area = area});
}

std::span<const std::uint8_t> ImageOutput::Part(const Area& area,
                                                std::span<const std::uint8_t> image) {
  return image.subspan(static_cast<std::size_t>(area.start), static_cast<std::size_t>(area.bytes));
}

std::string ImageOutput::Write(std::span<const std::uint8_t> image, Report& report) const {
  std::string names;
  for (const File& file : files_) {
    Attempt(report.unwritten, [&] {
      const auto part = Part(file.area, image);
      WriteImage(file.path, file.format, part);
      report.bytes += part.size();
      names += (names.empty() ? "" : ", ") + file.path.string();
    });
  }
  return names;
}

std::pair<Contents, std::uint8_t> ImageOutput::Judge(std::span<const std::uint8_t> image) const {
  const auto memory = Part(memories_.front(), image);
  const std::uint8_t first = memory.front();
  const bool uniform = std::ranges::all_of(memories_, [&](const Area& area) {
    return std::ranges::all_of(Part(area, image), [&](std::uint8_t byte) { return byte == first; });
  });
  if (uniform) return {Contents::kUniform, first};
  std::size_t i = 0;
  const bool counts = std::ranges::all_of(
      memory, [&i](std::uint8_t byte) { return byte == static_cast<std::uint8_t>(i++ / 2); });
  return {counts ? Contents::kAddresses : Contents::kOther, first};
}

}  // namespace fliglaf::cli
