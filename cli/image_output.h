#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "cli/options.h"
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

  /// Writes each file whole or not at all; returns how many bytes they hold together.
  [[nodiscard]] std::size_t Write(std::span<const std::uint8_t> image) const;
  /// The files, for a message.
  [[nodiscard]] std::string names() const;

 private:
  struct File {
    std::filesystem::path path;
    ImageFormat format;
    std::int32_t start;  ///< in the image
    std::int32_t bytes;
  };

  void Add(const std::filesystem::path& path, std::int32_t start, std::int32_t bytes);

  std::vector<File> files_;
};

}  // namespace fliglaf::cli
