// Intel HEX text.
#pragma once

#include <string>
#include <string_view>

#include "images/image.h"

namespace fliglaf {

/// The image that `text` holds, in records 00 to 05. What passes the end of the addresses goes
/// where the paper on the format (Hexadecimal Object File Format, revision A, 1988) has it:
/// after record 02, SBA + ((DRLO + DRI) mod 64K), to the start of the segment; after record 04, and
/// without either, (LBA + DRLO + DRI) mod 4G, to the next 64 KiB, and from 0xFFFFFFFF to address 0.
/// Lower-case digits and a byte order mark are accepted. Throws ImageError with `name` as the file
/// for a damaged record, two values of one address, a missing end record and lines after it.
[[nodiscard]] Image ParseIntelHex(std::string_view text, std::string_view name);

/// The text of an image: records of at most 16 bytes that begin at multiples of 16, preceded by
/// record 04 where the upper half of the address changes.
[[nodiscard]] std::string EncodeIntelHex(const Image& image);

}  // namespace fliglaf
