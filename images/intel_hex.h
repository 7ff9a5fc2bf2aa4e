// Intel HEX text.
#pragma once

#include <string>
#include <string_view>

#include "images/image.h"

namespace fliglaf {

/// The image that `text` holds, in records 00 to 05. A record that passes the end of a 64 KiB
/// segment set by record 02 goes on at its start; one after record 04 goes on in the next 64 KiB.
/// Throws ImageError with `name` as the file for a damaged record, two values of one address, a
/// missing end record and lines after it.
[[nodiscard]] Image ParseIntelHex(std::string_view text, std::string_view name);

/// The text of an image: records of at most 16 bytes that begin at multiples of 16, preceded by
/// record 04 where the upper half of the address changes.
[[nodiscard]] std::string EncodeIntelHex(const Image& image);

}  // namespace fliglaf
