#include "images/image.h"

#include <algorithm>
#include <array>
#include <utility>

#include "images/intel_hex.h"
#include "images/record_text.h"
#include "images/s_record.h"

namespace fliglaf {
namespace {

struct Ending {
  std::string_view text;
  ImageFormat format;
};

constexpr std::array kEndings = {
    Ending{".hex", ImageFormat::kIntelHex}, Ending{".ihex", ImageFormat::kIntelHex},
    Ending{".ihx", ImageFormat::kIntelHex}, Ending{".srec", ImageFormat::kSRecord},
    Ending{".s19", ImageFormat::kSRecord},  Ending{".s28", ImageFormat::kSRecord},
    Ending{".s37", ImageFormat::kSRecord},  Ending{".s", ImageFormat::kSRecord},
    Ending{".mot", ImageFormat::kSRecord},  Ending{".bin", ImageFormat::kBinary},
};

/// Endings are ASCII: the letters of the user's language are none of them.
char LowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// The format of the first line that begins like a record. Not only line 1 is asked, so that damage
/// there is found as damage of a record.
std::optional<ImageFormat> FormatOfText(std::string_view text) {
  LineReader lines(text);
  while (lines.Next()) {
    const std::string_view line = lines.line();
    if (line[0] == ':') return ImageFormat::kIntelHex;
    if (LowerCase(line[0]) == 's' && line.size() > 1 && line[1] >= '0' && line[1] <= '9') {
      return ImageFormat::kSRecord;
    }
  }
  return std::nullopt;
}

std::optional<ImageFormat> FormatOf(const std::filesystem::path& path, std::string_view text) {
  const auto named = FormatOfName(path);
  if (named == ImageFormat::kBinary) return named;
  const auto found = FormatOfText(text);
  return found ? found : named;
}

}  // namespace

std::optional<ImageFormat> FormatOfName(const std::filesystem::path& path) {
  std::string ending = path.extension().string();
  std::ranges::transform(ending, ending.begin(), LowerCase);
  const auto* row = std::ranges::find(kEndings, ending, &Ending::text);
  return row == kEndings.end() ? std::nullopt : std::optional(row->format);
}

std::string KnownEndings() {
  std::string list;
  for (const Ending& ending : kEndings) {
    if (!list.empty()) list += ' ';
    list += ending.text;
  }
  return list;
}

Image ReadImage(const std::filesystem::path& path) { return ParseImage(path, ReadFileWhole(path)); }

Image ParseImage(const std::filesystem::path& path, std::vector<std::uint8_t> content) {
  const std::string name = path.string();
  if (content.empty())
    throw ImageError(name + ": the file is empty; an image has at least one byte");

  const std::string_view text(reinterpret_cast<const char*>(content.data()), content.size());
  const auto format = FormatOf(path, text);
  if (!format) {
    throw ImageError(name +
                     ": holds no line of an Intel HEX (:...) or S-record file (S1...), and "
                     "the ending of its name does not tell the format; known endings: " +
                     KnownEndings());
  }
  switch (*format) {
    case ImageFormat::kIntelHex:
      return ParseIntelHex(text, name);
    case ImageFormat::kSRecord:
      return ParseSRecord(text, name);
    case ImageFormat::kBinary:
      break;
  }
  return Image{{Segment{0, std::move(content)}}};
}

void WriteImage(const std::filesystem::path& path, ImageFormat format,
                std::span<const std::uint8_t> bytes, std::uint32_t first_address) {
  if (bytes.empty()) throw ImageError(path.string() + ": there are no bytes to write");
  if (bytes.size() - 1 > kLastAddress - first_address) {
    throw ImageError(path.string() + ": " + std::to_string(bytes.size()) + " bytes from address " +
                     Hexadecimal(first_address, 8) + " go beyond 0xFFFFFFFF");
  }
  if (format == ImageFormat::kBinary) return WriteFileWhole(path, bytes);
  const Image image{{Segment{first_address, {bytes.begin(), bytes.end()}}}};
  const std::string text =
      format == ImageFormat::kIntelHex ? EncodeIntelHex(image) : EncodeSRecord(image);
  WriteFileWhole(path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

}  // namespace fliglaf
