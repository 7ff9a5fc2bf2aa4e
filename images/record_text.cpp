#include "images/record_text.h"

#include <numeric>

#include "shared/utf8.h"

namespace fliglaf {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";
constexpr std::uint8_t kNoDigit = 0xFF;
constexpr std::size_t kBytesOfLine = 16;

constexpr std::array<std::uint8_t, 256> kDigitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::uint8_t i = 0; i < 16; ++i) values[static_cast<std::uint8_t>(kDigits[i])] = i;
  for (std::uint8_t i = 10; i < 16; ++i) values[static_cast<std::size_t>('a') + i - 10] = i;
  return values;
}();

std::uint8_t DigitValue(char digit) { return kDigitValues[static_cast<std::uint8_t>(digit)]; }

/// A character as a message can show it.
std::string Shown(char c) {
  if (c > ' ' && c <= '~') return std::string("'") + c + "'";
  return "the byte " + Hexadecimal(static_cast<std::uint8_t>(c), 2);
}

void CheckDigits(std::string_view line, std::size_t mark, const Place& place) {
  const auto* wrong = std::find_if(line.begin() + mark, line.end(),
                                   [](char c) { return DigitValue(c) == kNoDigit; });
  if (wrong == line.end()) return;
  Fail(place, Shown(*wrong) + " in column " + std::to_string(wrong - line.begin() + 1) +
                  " is not a hexadecimal digit");
}

}  // namespace

void Fail(const Place& place, const std::string& what) {
  throw ImageError(std::string(place.file) + ":" + std::to_string(place.line) + ": " + what);
}

std::string Hexadecimal(std::uint32_t value, int digits) {
  std::string text;
  for (int i = 0; i < digits || value != 0; ++i, value >>= 4) text += kDigits[value & 0xF];
  return "0x" + std::string(text.rbegin(), text.rend());
}

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string Quoted(std::string_view line) {
  constexpr std::size_t kMost = 20;
  return "\"" + Excerpt(line, kMost) + "\"";
}

LineReader::LineReader(std::string_view text) : rest_(text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (rest_.starts_with(kByteOrderMark)) rest_.remove_prefix(kByteOrderMark.size());
}

bool LineReader::Next() {
  while (!rest_.empty()) {
    const std::size_t end = rest_.find('\n');
    line_ = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    ++number_;
    line_.remove_suffix(line_.size() - (line_.find_last_not_of(" \t\r") + 1));
    if (!line_.empty()) return true;
  }
  return false;
}

Record::Record(std::string_view line, std::size_t mark, const Place& place) {
  CheckDigits(line, mark, place);
  const std::string_view digits = line.substr(mark);
  if (digits.size() % 2 != 0) {
    Fail(place, "the record has " + Counted(digits.size(), "hexadecimal digit") +
                    "; the number must be even");
  }
  if (digits.size() / 2 > bytes_.size()) {
    Fail(place, "the record has " + Counted(digits.size() / 2, "byte") + "; it must have at most " +
                    std::to_string(bytes_.size()));
  }
  for (; size_ < digits.size() / 2; ++size_) {
    bytes_[size_] = static_cast<std::uint8_t>(DigitValue(digits[2 * size_]) << 4 |
                                              DigitValue(digits[2 * size_ + 1]));
  }
}

std::uint8_t Record::Sum() const {
  return std::accumulate(
      bytes_.begin(), bytes_.begin() + (size_ - 1), std::uint8_t{0},
      [](std::uint8_t sum, std::uint8_t b) { return static_cast<std::uint8_t>(sum + b); });
}

void Record::CheckSum(std::uint8_t sum, const Place& place) const {
  if (bytes_[size_ - 1] == sum) return;
  Fail(place, "the checksum is " + Hexadecimal(bytes_[size_ - 1], 2) + "; it must be " +
                  Hexadecimal(sum, 2));
}

std::uint32_t BigEndian(std::span<const std::uint8_t> bytes) {
  std::uint32_t value = 0;
  for (const std::uint8_t b : bytes) value = value << 8 | b;
  return value;
}

std::vector<DataLine> LinesOf(const Image& image) {
  std::vector<DataLine> lines;
  for (const Segment& segment : image.segments) {
    std::span<const std::uint8_t> rest = segment.bytes;
    for (std::uint32_t address = segment.address; !rest.empty();) {
      const std::size_t size = std::min(rest.size(), kBytesOfLine - address % kBytesOfLine);
      lines.push_back({address, rest.first(size)});
      rest = rest.subspan(size);
      address += static_cast<std::uint32_t>(size);
    }
  }
  return lines;
}

void RecordWriter::Byte(std::uint8_t value) {
  text_ += kDigits[value >> 4];
  text_ += kDigits[value & 0xF];
  sum_ = static_cast<std::uint8_t>(sum_ + value);
}

void RecordWriter::Number(std::uint32_t value, int width) {
  while (width-- > 0) Byte(static_cast<std::uint8_t>(value >> 8 * width));
}

void RecordWriter::Bytes(std::span<const std::uint8_t> values) {
  for (const std::uint8_t value : values) Byte(value);
}

}  // namespace fliglaf
