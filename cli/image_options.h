#pragma once

#include <filesystem>

#include "cli/option_set.h"

namespace fliglaf::cli {

/// The options for the parts of a device's image that have files of their own, read or written.
inline void AddEepromFile(OptionSet& options, std::filesystem::path& file) {
  options.File("--eeprom", "Contents of the data memory, in a file of its own from address 0",
               file);
}

inline void AddImageFile(OptionSet& options, std::filesystem::path& file) {
  options.File("--image", "The whole device image, as the library lays it out", file);
}

}  // namespace fliglaf::cli
