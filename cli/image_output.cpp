#include "cli/image_output.h"

#include <algorithm>

#include <fmt/format.h>

#include "cli/attempt.h"
#include "cli/image_options.h"
#include "cli/usage_error.h"
#include "devices/memory_layout.h"

namespace fliglaf::cli {

void OutputFiles::AddTo(OptionSet& options) {
  options.File("-o,--output",
               "File for the main memory; its ending selects the format (.hex, .s19, .bin, ...)",
               memory);
  AddEepromFile(options, eeprom);
  AddImageFile(options, image);
}

ImageOutput::ImageOutput(const OutputFiles& files, const DeviceProfile& device) {
  const ImageLayout layout = LayoutOf(device);
  main_bytes_ = layout.main_bytes;
  if (!files.eeprom.empty() && layout.data_bytes == 0) {
    throw UsageError(device.name + " has no data memory for --eeprom");
  }
  Add(files.memory, 0, layout.main_bytes);
  Add(files.eeprom, layout.data_start, layout.data_bytes);
  Add(files.image, 0, device.image_bytes);
  if (files_.empty()) {
    throw UsageError("read: name the file to write, with --output, --eeprom or --image");
  }
}

void ImageOutput::Add(const std::filesystem::path& path, std::int64_t start, std::int64_t bytes) {
  if (path.empty()) return;
  const auto format = FormatOfName(path);
  if (!format) {
    throw UsageError(fmt::format("{}: the name must end in {}", path.string(), KnownEndings()));
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

std::pair<Contents, std::uint8_t> ImageOutput::Judge(std::span<const std::uint8_t> image) const {
  auto memory = Part(files_.front(), image);
  if (files_.front().start == 0) memory = memory.first(static_cast<std::size_t>(main_bytes_));
  const std::uint8_t first = memory.front();
  if (std::ranges::all_of(memory, [first](std::uint8_t byte) { return byte == first; })) {
    return {Contents::kUniform, first};
  }
  std::size_t i = 0;
  const bool counts = std::ranges::all_of(
      memory, [&i](std::uint8_t byte) { return byte == static_cast<std::uint8_t>(i++ / 2); });
  return {counts ? Contents::kAddresses : Contents::kOther, first};
}

}  // namespace fliglaf::cli
