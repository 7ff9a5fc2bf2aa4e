#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/image_files.h"
#include "cli/option_set.h"
#include "devices/device_profile.h"
#include "image_layout/image_layout.h"
#include "images/image.h"

namespace fliglaf::cli {

/// Adds the files that give a device's contents.
void AddInputFiles(OptionSet& options, ImageFiles& files);

/// The contents of the device image that the files give.
class ImageInput {
 public:
  /// Reads the files for `command`. Throws UsageError when none is named, when the device has no
  /// such memory, an address lies outside it, or they give none of what program, verify and compare
  /// work on; ImageError for a file that cannot be read.
  ImageInput(const std::string& command, const ImageFiles& files, const DeviceProfile& device);

  /// Puts the contents over what `image` holds.
  void CopyTo(std::span<std::uint8_t> image) const;

  /// Bytes that the files give of the memories that program, verify and compare work on.
  [[nodiscard]] std::size_t bytes() const { return bytes_; }
  /// Whether some of them are of the main memory, and of the data memory.
  [[nodiscard]] bool has_main() const { return has_main_; }
  [[nodiscard]] bool has_data() const { return has_data_; }
  /// True when the files give every byte of these memories.
  [[nodiscard]] bool is_whole() const;
  /// The end of a sentence: what else the files give, such as the configuration bytes of an image,
  /// and that it was not `done`; a full stop when there is nothing else.
  [[nodiscard]] std::string Others(std::string_view done) const;

 private:
  void Measure();
  void Add(const std::filesystem::path& file, std::int64_t start, std::int64_t bytes,
           std::string_view what, const std::string& device);

  struct Range {
    std::uint64_t first;
    std::uint64_t end;
  };
  [[nodiscard]] std::string RangesOfOthers() const;
  [[nodiscard]] std::vector<Range> Within(std::int64_t start, std::int64_t end) const;

  ImageLayout layout_;
  std::int64_t image_bytes_;
  std::vector<Segment> segments_;  ///< by image address
  std::size_t bytes_ = 0;
  bool has_main_ = false;
  bool has_data_ = false;
};

}  // namespace fliglaf::cli
