// What Intel HEX and S-record files have in common: lines of hexadecimal pairs.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "images/image.h"

namespace fliglaf {

inline constexpr std::uint32_t kLastAddress = 0xFFFFFFFF;

/// A line of a file, for messages.
struct Place {
  std::string_view file;
  std::uint32_t line = 0;  ///< from 1
};

/// Throws ImageError with "FILE:LINE: what".
[[noreturn]] void Fail(const Place& place, const std::string& what);

/// `value` as 0x and at least `digits` upper-case digits.
[[nodiscard]] std::string Hexadecimal(std::uint32_t value, int digits);

/// "1 byte", "2 bytes".
[[nodiscard]] std::string Counted(std::size_t count, const std::string& noun);

/// The beginning of a line in quotes, for messages.
[[nodiscard]] std::string Quoted(std::string_view line);

/// The lines of a text that hold something, without blanks at their ends. A byte order mark of
/// UTF-8 at the start, which some editors write, belongs to no line.
class LineReader {
 public:
  explicit LineReader(std::string_view text);

  /// Goes to the next line that is not blank; false when there is none.
  [[nodiscard]] bool Next();
  /// The line that Next() found: at least one character.
  [[nodiscard]] std::string_view line() const { return line_; }
  /// Its number, from 1; after the end the number of the last line, 1 for an empty text.
  [[nodiscard]] std::uint32_t number() const { return std::max(number_, std::uint32_t{1}); }

 private:
  std::string_view rest_;
  std::string_view line_;
  std::uint32_t number_ = 0;
};

/// The bytes of one record, decoded from its hexadecimal pairs.
class Record {
 public:
  /// Decodes `line` after its first `mark` characters. Throws ImageError for a character that is
  /// not a hexadecimal digit, half a byte, and more bytes than any record has.
  Record(std::string_view line, std::size_t mark, const Place& place);

  [[nodiscard]] std::span<const std::uint8_t> bytes() const { return {bytes_.data(), size_}; }
  /// The sum of all bytes but the last, which is the checksum.
  [[nodiscard]] std::uint8_t Sum() const;
  /// Throws ImageError unless the last byte is `sum`.
  void CheckSum(std::uint8_t sum, const Place& place) const;

 private:
  std::array<std::uint8_t, 260> bytes_;  // length, address, type, 255 bytes of data, checksum
  std::size_t size_ = 0;
};

/// The number that bytes in big-endian order make; at most four.
[[nodiscard]] std::uint32_t BigEndian(std::span<const std::uint8_t> bytes);

/// What one data record of a written file holds.
struct DataLine {
  std::uint32_t address;
  std::span<const std::uint8_t> bytes;  ///< of the image
};

/// An image cut at the multiples of 16, so that no line crosses a 64 KiB border.
[[nodiscard]] std::vector<DataLine> LinesOf(const Image& image);

/// Builds the text of a file, pair by pair.
class RecordWriter {
 public:
  void Begin(std::string_view mark) { text_ += mark, sum_ = 0; }
  void Byte(std::uint8_t value);
  /// The `width` low bytes of `value`, the highest first.
  void Number(std::uint32_t value, int width);
  void Bytes(std::span<const std::uint8_t> values);
  /// The sum of the bytes since Begin().
  [[nodiscard]] std::uint8_t sum() const { return sum_; }
  void EndLine() { text_ += '\n'; }
  /// The text; the writer is empty afterwards.
  [[nodiscard]] std::string Take() { return std::move(text_); }

 private:
  std::string text_;
  std::uint8_t sum_ = 0;
};

}  // namespace fliglaf
