#include "cli/image_input.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "cli/parse_options.h"
#include "cli/usage_error.h"
#include "devices/kinds/device_kind.h"

namespace fliglaf::cli {
namespace {

/// Where compilers for the AVR put the data memory, and behind it fuses and lock bits, so that one
/// file can hold them all.
constexpr std::uint64_t kCompilersEeprom = 0x810000;
constexpr std::uint64_t kCompilersEnd = 0x850000;

std::string_view NoteOn(std::uint64_t address) {
  if (address < kCompilersEeprom || address >= kCompilersEnd) return {};
  return "; compilers put EEPROM data at 0x810000, fuses at 0x820000 and lock bits at 0x830000: "
         "give the data as a file of its own, from address 0, with --eeprom, and set the others "
         "with \"fliglaf config\"";
}

}  // namespace

void AddInputFiles(OptionSet& options, ImageFiles& files) {
  files.AddTo(options, "FILE",
              "Contents of the main memory: Intel HEX, Motorola S-record or binary (not with "
              "--image)");
  options.Exclude("--image", {"FILE", "--eeprom"});
}

ImageInput::ImageInput(const std::string& command, const ImageFiles& files,
                       const DeviceProfile& device)
    : layout_(LayoutOf(device)), image_bytes_(device.image_bytes) {
  const auto& [main_bytes, data_start, data_bytes, config, config_start] = layout_;
  if (!files.image.empty()) {
    Add(files.image, 0, device.image_bytes, "image", device.name);
  }
  if (!files.memory.empty()) {
    Add(files.memory, 0, main_bytes, "memory", device.name);
  }
  if (!files.eeprom.empty()) {
    if (data_bytes == 0) throw UsageError(device.name + " has no data memory for --eeprom");
    Add(files.eeprom, data_start, data_bytes, "data memory", device.name);
  }
  if (segments_.empty()) {
    throw UsageError(command + ": name the file with the device's contents", SeeHelp(command));
  }
  Measure();
  if (bytes_ == 0) {
    throw UsageError(
        fmt::format("{}: the file gives none of the device's memories{}", command,
                    RangesOfOthers().empty() ? "" : "; \"fliglaf config\" writes configuration"));
  }
}

void ImageInput::Measure() {
  const auto main = Within(0, layout_.main_bytes);
  const auto data = Within(layout_.data_start, layout_.data_start + layout_.data_bytes);
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
      const std::uint64_t outside = std::max<std::uint64_t>(segment.address, size);
      throw UsageError(fmt::format(
          "{}: address 0x{:04X} lies outside {}, whose {} goes from 0x0000 to 0x{:04X}{}",
          file.string(), outside, device, what, size - 1, NoteOn(outside)));
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

std::string ImageInput::Others(std::string_view done) const {
  const std::string others = RangesOfOthers();
  if (others.empty()) return ".";
  return fmt::format("; {} of the image, which is configuration or unused, was not {}.", others,
                     done);
}

/// "0x3FE0 to 0x3FE4"; empty when there is nothing else.
std::string ImageInput::RangesOfOthers() const {
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
