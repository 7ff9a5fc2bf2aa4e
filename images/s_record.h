// S-record text.
#pragma once

#include <string>
#include <string_view>

#include "images/image.h"

namespace fliglaf {

/// The image that `text` holds, in records S0 to S9 without the reserved S4. The last record has
/// to be an end record (S7, S8, S9) or a count (S5, S6), which shows that the file is whole. A
/// lower-case s and digits, which some tools write, and a byte order mark are accepted. Throws
/// ImageError with `name` as the file for a damaged record, a count that is not that of the data
/// records before it, two values of one address, a missing last record and lines after the end.
[[nodiscard]] Image ParseSRecord(std::string_view text, std::string_view name);

/// The text of an image: a header, records of at most 16 bytes that begin at multiples of 16, their
/// count and an end record. S1, S2 or S3 is chosen by the highest address.
[[nodiscard]] std::string EncodeSRecord(const Image& image);

}  // namespace fliglaf
