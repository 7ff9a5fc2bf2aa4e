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

/// For endings, which are ASCII, whatever the language of the user.
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

/// What else a user may take for an image, by its first bytes.
struct Container {
  std::string_view magic;
  const char* advice;
};

constexpr std::array kContainers = {
    Container{"\177ELF", "an ELF program; convert it with objcopy -O ihex"},
    Container{"\x1F\x8B", "compressed with gzip; unpack it with gunzip"},
    Container{"BZh", "compressed with bzip2; unpack it with bunzip2"},
    Container{"\3757zXZ", "compressed with xz; unpack it with unxz"},
    Container{"PK\x03\x04", "a ZIP archive; unpack it with unzip"},
    Container{"\xFF\xFE", "text in UTF-16; save it as ASCII or UTF-8"},
    Container{"\xFE\xFF", "text in UTF-16; save it as ASCII or UTF-8"},
};

void CheckNoContainer(const std::string& name, std::string_view text) {
  for (const auto& [magic, advice] : kContainers) {
    if (text.starts_with(magic)) throw ImageError(name + ": " + advice);
  }
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
  if (content.empty()) throw ImageError(name + ": is empty; an image must have at least one byte");

  const std::string_view text(reinterpret_cast<const char*>(content.data()), content.size());
  const auto format = FormatOf(path, text);
  if (format != ImageFormat::kBinary) CheckNoContainer(name, text);
  if (!format) {
    throw ImageError(name +
                     ": unknown format; no line is of an Intel HEX (:...) or S-record file "
                     "(S1...), and the name has none of the endings " +
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
  if (bytes.empty())
    throw ImageError(path.string() +
                     ": there is nothing to write; an image must have at least one byte");
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
