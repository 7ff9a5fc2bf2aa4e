#pragma once

#include <filesystem>
#include <string>
#include <utility>

#include "cli/option_set.h"

namespace fliglaf::cli {

/// The files for the parts of a device's image, read or written.
struct ImageFiles {
  std::filesystem::path memory;  ///< the main memory
  std::filesystem::path eeprom;  ///< the data memory
  std::filesystem::path image;   ///< the whole image

  void AddTo(OptionSet& options, std::string memory_names, std::string memory_help) {
    options.File(std::move(memory_names), std::move(memory_help), memory);
    options.File("--eeprom", "Contents of the data memory, in a file of its own from address 0",
                 eeprom);
    options.File("--image", "The whole device image, as the library lays it out", image);
  }
};

}  // namespace fliglaf::cli
