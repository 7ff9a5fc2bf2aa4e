#include "images/intel_hex.h"

#include <algorithm>
#include <array>

#include "images/image_builder.h"
#include "images/record_text.h"

namespace fliglaf {
namespace {

namespace type {
enum : std::uint8_t { kData, kEnd, kSegmentBase, kStartSegment, kLinearBase, kStartLinear };
}  // namespace type

constexpr std::size_t kFrame = 5;  // length, address (2), type, checksum
constexpr std::string_view kEndRecord = ":00000001FF";
constexpr std::uint32_t kSegmentSize = 0x10000;
constexpr std::uint64_t kAddresses = std::uint64_t{kLastAddress} + 1;

/// Bytes that the record types from 01 on carry.
constexpr std::array<std::size_t, 6> kParameterBytes = {0, 0, 2, 4, 2, 4};

class Parser {
 public:
  Parser(std::string_view text, std::string_view name)
      : lines_(text), name_(name), builder_(name) {}

  Image Parse() {
    while (lines_.Next()) ReadLine();
    if (end_line_ == 0) {
      Fail(place(), "the file ends without the end record " + std::string(kEndRecord) +
                        "; part of it may be missing");
    }
    return builder_.Finish(end_line_);
  }

 private:
  [[nodiscard]] Place place() const { return {name_, lines_.number()}; }

  void ReadLine() {
    if (end_line_ != 0) {
      Fail(place(),
           "the end record is in line " + std::to_string(end_line_) + "; nothing may follow it");
    }
    if (lines_.line()[0] != ':') {
      Fail(place(),
           "a line of an Intel HEX file must begin with ':', not " + Quoted(lines_.line()));
    }
    const Record record(lines_.line(), 1, place());
    CheckFrame(record);
    const auto bytes = record.bytes();
    Take(bytes[3], BigEndian(bytes.subspan(1, 2)), bytes.subspan(4, bytes.size() - kFrame));
  }

  void CheckFrame(const Record& record) const {
    const auto bytes = record.bytes();
    if (bytes.size() < kFrame) {
      Fail(place(), "the record has " + Counted(bytes.size(), "byte") + "; it must have at least " +
                        std::to_string(kFrame));
    }
    if (bytes[0] + kFrame != bytes.size()) {
      Fail(place(), "the record announces " + Counted(bytes[0], "data byte") + " but has " +
                        std::to_string(bytes.size() - kFrame));
    }
    record.CheckSum(static_cast<std::uint8_t>(-record.Sum()), place());
  }

  void Take(std::uint8_t kind, std::uint32_t offset, std::span<const std::uint8_t> data) {
    if (kind == type::kData) return AddData(offset, data);
    if (kind >= kParameterBytes.size()) {
      Fail(place(), "the record type is " + Hexadecimal(kind, 2) + "; it must be 0x00 to 0x05");
    }
    if (data.size() != kParameterBytes[kind]) {
      Fail(place(), "a record of type " + Hexadecimal(kind, 2) + " must have " +
                        Counted(kParameterBytes[kind], "data byte") + ", not " +
                        std::to_string(data.size()));
    }
    if (kind == type::kEnd) end_line_ = lines_.number();
    if (kind == type::kSegmentBase) base_ = BigEndian(data) << 4;
    if (kind == type::kLinearBase) base_ = BigEndian(data) << 16;
    if (kind == type::kSegmentBase || kind == type::kLinearBase) {
      in_segment_ = kind == type::kSegmentBase;
    }
  }

  void AddData(std::uint32_t offset, std::span<const std::uint8_t> data) {
    const std::uint64_t room = in_segment_ ? kSegmentSize - offset : kAddresses - (base_ + offset);
    const auto ahead = static_cast<std::size_t>(std::min<std::uint64_t>(data.size(), room));
    builder_.Add(base_ + offset, data.first(ahead), lines_.number());
    builder_.Add(in_segment_ ? base_ : 0, data.subspan(ahead), lines_.number());
  }

  LineReader lines_;
  std::string_view name_;
  ImageBuilder builder_;
  std::uint32_t base_ = 0;
  bool in_segment_ = false;     // the offset wraps at 64 KiB
  std::uint32_t end_line_ = 0;  // 0: not met yet
};

void WriteRecord(RecordWriter& out, std::uint8_t kind, std::uint32_t offset,
                 std::span<const std::uint8_t> data) {
  out.Begin(":");
  out.Byte(static_cast<std::uint8_t>(data.size()));
  out.Number(offset, 2);
  out.Byte(kind);
  out.Bytes(data);
  out.Byte(static_cast<std::uint8_t>(-out.sum()));
  out.EndLine();
}

}  // namespace

Image ParseIntelHex(std::string_view text, std::string_view name) {
  return Parser(text, name).Parse();
}

std::string EncodeIntelHex(const Image& image) {
  RecordWriter out;
  std::uint32_t upper = 0;
  for (const auto& [address, bytes] : LinesOf(image)) {
    if (address >> 16 != upper) {
      upper = address >> 16;
      const std::array base = {static_cast<std::uint8_t>(upper >> 8),
                               static_cast<std::uint8_t>(upper)};
      WriteRecord(out, type::kLinearBase, 0, base);
    }
    WriteRecord(out, type::kData, address & 0xFFFF, bytes);
  }
  WriteRecord(out, type::kEnd, 0, {});
  return out.Take();
}

}  // namespace fliglaf
