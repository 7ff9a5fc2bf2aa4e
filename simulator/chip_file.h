// The contents of a simulated chip between calls of the command line: a text file that people can
// read and compare.
//
//     fliglaf chip 1
//     device isp51-4k
//     area flash 4096
//     0000: 02 00 06 75 90 FF ...
//     area lock 1
//     0000: 01
//     end
//
// A row holds up to 32 bytes from its hexadecimal address on; bytes that no row names are
// those of a new chip.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "simulator/chip.h"

namespace fliglaf::simulator {

/// The text is not the contents of this chip; what() says where and why, in one line.
class ChipFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The contents of `chip` as a text.
[[nodiscard]] std::string SaveChip(Chip& chip, std::string_view device);

/// Fills `chip` with the contents in `text`; nothing is changed when it throws ChipFileError.
/// `name` stands before the line number in its message.
void LoadChip(Chip& chip, std::string_view device, std::string_view text, std::string_view name);

}  // namespace fliglaf::simulator
