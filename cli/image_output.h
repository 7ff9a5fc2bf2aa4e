#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/options.h"
#include "cli/report.h"
#include "devices/device_profile.h"
#include "images/image.h"

namespace fliglaf::cli {

/// The files that a read goes to.
class ImageOutput {
 public:
  /// Finds out what the options ask for and whether it can be written. Throws UsageError when no
  /// file is named, an ending tells no format, or the device has no such memory; ImageError for a
  /// file that cannot be written.
  ImageOutput(const Options& options, const DeviceProfile& device);

  /// Writes each file whole or not at all. The report gets the number of bytes written and what
  /// could not be written; returns the names of the files that were.
  std::string Write(std::span<const std::uint8_t> image, Report& report) const;
  /// The value of all bytes of `image` that go into files, when they are all the same.
  [[nodiscard]] std::optional<std::uint8_t> OneValue(std::span<const std::uint8_t> image) const;

 private:
  struct File {
    std::filesystem::path path;
    ImageFormat format;
    std::int64_t start;  ///< in the image
    std::int64_t bytes;
  };

  [[nodiscard]] static std::span<const std::uint8_t> Part(const File& file,
                                                          std::span<const std::uint8_t> image);
  void Add(const std::filesystem::path& path, std::int64_t start, std::int64_t bytes);

  std::vector<File> files_;
};

}  // namespace fliglaf::cli
