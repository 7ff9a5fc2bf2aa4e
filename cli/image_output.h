#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "cli/image_files.h"
#include "cli/report.h"
#include "devices/device_profile.h"
#include "images/image.h"

namespace fliglaf::cli {

/// What a memory looks like that was read.
enum class Contents {
  kOther,
  kUniform,    ///< one value
  kAddresses,  ///< 00 00 01 01 02 02...: what locked parts with pages of words answer
};

/// The files that a read goes to.
class ImageOutput {
 public:
  /// Checks that the files can be written. Throws UsageError when no file is named, an ending stands
  /// for no format, or the device has no such memory; ImageError for a file that cannot be written.
  ImageOutput(const ImageFiles& files, const DeviceProfile& device);

  /// Writes each file whole or not at all. The report gets the number of bytes written and what
  /// could not be written; returns the names of the files that were.
  std::string Write(std::span<const std::uint8_t> image, Report& report) const;
  /// What the memories that go into files look like, leaving the configuration aside, and their first
  /// byte.
  [[nodiscard]] std::pair<Contents, std::uint8_t> Judge(std::span<const std::uint8_t> image) const;

 private:
  struct Area {
    std::int64_t start;  ///< in the image
    std::int64_t bytes;
  };
  struct File {
    std::filesystem::path path;
    ImageFormat format;
    Area area;
  };

  [[nodiscard]] static std::span<const std::uint8_t> Part(const Area& area,
                                                          std::span<const std::uint8_t> image);
  void Add(const std::filesystem::path& path, const Area& area);

  std::vector<File> files_;
  std::vector<Area> memories_;
};

}  // namespace fliglaf::cli
