#include "images/s_record.h"

#include <array>

#include "images/image_builder.h"
#include "images/record_text.h"

namespace fliglaf {
namespace {

enum class Role { kHeader, kData, kReserved, kCount, kEnd };

struct Kind {
  Role role;
  std::size_t address_bytes;
};

/// The records S0 to S9.
constexpr std::array<Kind, 10> kKinds = {{
    {Role::kHeader, 2},
    {Role::kData, 2},
    {Role::kData, 3},
    {Role::kData, 4},
    {Role::kReserved, 0},
    {Role::kCount, 2},
    {Role::kCount, 3},
    {Role::kEnd, 4},
    {Role::kEnd, 3},
    {Role::kEnd, 2},
}};

constexpr std::string_view kHeader = "fliglaf";

class Parser {
 public:
  Parser(std::string_view text, std::string_view name)
      : lines_(text), name_(name), builder_(name) {}

  Image Parse() {
    while (lines_.Next()) ReadLine();
    if (last_ != Role::kEnd && last_ != Role::kCount) {
      Fail(place(),
           "the file ends without an end record (S7, S8, S9) or a count (S5, S6); part of it "
           "may be missing");
    }
    return builder_.Finish(last_line_);
  }

 private:
  [[nodiscard]] Place place() const { return {name_, lines_.number()}; }

  void ReadLine() {
    if (last_ == Role::kEnd) {
      Fail(place(),
           "the end record is in line " + std::to_string(last_line_) + "; nothing may follow it");
    }
    const Kind kind = ReadKind();
    const Record record(lines_.line(), 2, place());
    CheckFrame(record, kind);
    const auto content = record.bytes().subspan(1, record.bytes().size() - 2);
    Take(kind.role, BigEndian(content.first(kind.address_bytes)),
         content.subspan(kind.address_bytes));
    last_ = kind.role;
    last_line_ = lines_.number();
  }

  [[nodiscard]] Kind ReadKind() const {
    const std::string_view line = lines_.line();
    if (line.size() < 2 || (line[0] != 'S' && line[0] != 's') || line[1] < '0' || line[1] > '9') {
      Fail(place(),
           "a line of an S-record file must begin with S and a digit, not " + Quoted(line));
    }
    const Kind kind = kKinds[static_cast<std::size_t>(line[1] - '0')];
    if (kind.role == Role::kReserved) {
      Fail(place(), "S4 is a reserved record; it must be one of S0 to S3 and S5 to S9");
    }
    return kind;
  }

  void CheckFrame(const Record& record, Kind kind) const {
    const auto bytes = record.bytes();
    const std::size_t shortest = 1 + kind.address_bytes + 1;  // count, address, checksum
    if (bytes.size() < shortest) {
      Fail(place(), "the record has " + Counted(bytes.size(), "byte") + "; it must have at least " +
                        std::to_string(shortest));
    }
    if (bytes[0] + std::size_t{1} != bytes.size()) {
      Fail(place(), "the record announces " + Counted(bytes[0], "byte") +
                        " after its length but has " + std::to_string(bytes.size() - 1));
    }
    record.CheckSum(static_cast<std::uint8_t>(~record.Sum()), place());
    if (kind.role != Role::kHeader && kind.role != Role::kData && bytes.size() != shortest) {
      Fail(place(), "a count or end record must have no data; this one has " +
                        Counted(bytes.size() - shortest, "byte"));
    }
  }

  void Take(Role role, std::uint32_t address, std::span<const std::uint8_t> data) {
    if (role == Role::kData) {
      builder_.Add(address, data, lines_.number());
      ++data_records_;
    }
    if (role == Role::kCount && address != data_records_) {
      Fail(place(), "the count is " + std::to_string(address) + "; it must be " +
                        std::to_string(data_records_) + ", the number of data records before it");
    }
  }

  LineReader lines_;
  std::string_view name_;
  ImageBuilder builder_;
  std::uint32_t data_records_ = 0;
  Role last_ = Role::kHeader;
  std::uint32_t last_line_ = 0;
};

void WriteRecord(RecordWriter& out, char digit, std::uint32_t address,
                 std::span<const std::uint8_t> data) {
  const std::size_t width = kKinds[static_cast<std::size_t>(digit - '0')].address_bytes;
  out.Begin(std::string{'S', digit});
  out.Byte(static_cast<std::uint8_t>(width + data.size() + 1));
  out.Number(address, static_cast<int>(width));
  out.Bytes(data);
  out.Byte(static_cast<std::uint8_t>(~out.sum()));
  out.EndLine();
}

/// Where the data records and the end record of an image stand in the table of kinds.
struct Digits {
  char data;
  char end;
};

Digits DigitsFor(std::uint64_t end) {
  if (end <= 0x1'0000) return {'1', '9'};
  if (end <= 0x100'0000) return {'2', '8'};
  return {'3', '7'};
}

}  // namespace

Image ParseSRecord(std::string_view text, std::string_view name) {
  return Parser(text, name).Parse();
}

std::string EncodeSRecord(const Image& image) {
  RecordWriter out;
  WriteRecord(out, '0', 0, {reinterpret_cast<const std::uint8_t*>(kHeader.data()), kHeader.size()});
  const Digits digits = DigitsFor(image.end());
  const auto lines = LinesOf(image);
  for (const auto& [address, bytes] : lines) WriteRecord(out, digits.data, address, bytes);
  // The widest count has three bytes; more records than that go without one.
  if (const auto count = static_cast<std::uint32_t>(lines.size()); count <= 0xFF'FFFF) {
    WriteRecord(out, count <= 0xFFFF ? '5' : '6', count, {});
  }
  WriteRecord(out, digits.end, 0, {});
  return out.Take();
}

}  // namespace fliglaf
