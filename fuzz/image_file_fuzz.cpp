// Arbitrary bytes as an image file whose name tells nothing: they give segments in ascending order
// that do not touch, which come back from either format as they are, or a message with its place.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/check.h"
#include "images/intel_hex.h"
#include "images/record_text.h"
#include "images/s_record.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace {

using namespace fliglaf;
using fuzz::Require;

Image Parse(std::string_view text) { return ParseImage("f", {text.begin(), text.end()}); }

void CheckImage(const Image& image, std::size_t text_size) {
  std::uint64_t end = 0;
  std::size_t bytes = 0;
  for (const Segment& segment : image.segments) {
    Require(!segment.bytes.empty(), "a segment has bytes");
    Require(segment.address > end || &segment == image.segments.data(), "a gap between segments");
    Require(segment.end() <= std::uint64_t{kLastAddress} + 1, "32 bits of address");
    end = segment.end();
    bytes += segment.bytes.size();
  }
  Require(bytes > 0 && 2 * bytes <= text_size, "each byte stands in the text");
  Require(Parse(EncodeIntelHex(image)) == image, "Intel HEX gives the image back");
  Require(Parse(EncodeSRecord(image)) == image, "S-records give the image back");
}

/// `line` with the length and the checksum that its other bytes ask for; as it is where it is no
/// record.
std::string Mended(std::string_view line) {
  const std::size_t mark = line.starts_with(':') ? 1 : 2;
  try {
    const Record record(line, std::min(mark, line.size()), {});
    const auto bytes = record.bytes();
    if (bytes.size() < 4) return std::string(line);
    RecordWriter out;
    out.Begin(line.substr(0, mark));
    out.Byte(static_cast<std::uint8_t>(mark == 1 ? bytes.size() - 5 : bytes.size() - 1));
    out.Bytes(bytes.subspan(1, bytes.size() - 2));
    out.Byte(static_cast<std::uint8_t>(mark == 1 ? -out.sum() : ~out.sum()));
    return out.Take();
  } catch (const ImageError&) {
    return std::string(line);
  }
}

}  // namespace

/// Of two mutations one is mended, or nearly none would get past the checksum.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  size = LLVMFuzzerMutate(data, size, most);
  if (seed % 2 == 0) return size;
  std::string mended;
  LineReader lines({reinterpret_cast<const char*>(data), size});
  while (lines.Next()) mended += Mended(lines.line()) + "\n";
  size = std::min(mended.size(), most);
  std::copy_n(mended.begin(), size, data);
  return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    CheckImage(Parse(text), size);
  } catch (const ImageError& error) {
    const std::string_view message = error.what();
    if (message.starts_with("f: ")) {
      fuzz::RequireOneLine(message);
    } else {
      fuzz::RequirePlace(message, text);
    }
  }
  return 0;
}
