#include "simulator/chip_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <vector>

#include "shared/utf8.h"

namespace fliglaf::simulator {
namespace {

constexpr std::string_view kFirstLine = "fliglaf chip 1";
constexpr std::string_view kBegins = "a chip file begins with \"fliglaf chip 1\"";
constexpr std::size_t kRowBytes = 32;

std::string Format(const char* pattern, std::size_t value) {
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), pattern, value);
  return text.data();
}

void SaveArea(const MemoryArea& area, std::string& text) {
  text += "area " + area.name + " " + std::to_string(area.bytes.size()) + "\n";
  const std::vector<std::uint8_t> fresh = area.Fresh();
  for (std::size_t start = 0; start < area.bytes.size(); start += kRowBytes) {
    const auto row = area.bytes.subspan(start, std::min(kRowBytes, area.bytes.size() - start));
    if (std::ranges::equal(row, std::span(fresh).subspan(start, row.size()))) continue;
    text += Format("%04zX:", start);
    for (const std::uint8_t byte : row) text += Format(" %02zX", byte);
    text += "\n";
  }
}

/// Takes the next word of a line, blanks between them; empty at its end.
std::string_view TakeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  const std::string_view word = line.substr(0, line.find(' '));
  line.remove_prefix(word.size());
  return word;
}

std::optional<std::size_t> Number(std::string_view word, int base) {
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value, base);
  if (error != std::errc{} || end != word.data() + word.size()) return std::nullopt;
  return value;
}

class Reader {
 public:
  Reader(const std::vector<MemoryArea>& areas, std::string_view device, std::string_view name)
      : device_(device), name_(name) {
    for (const MemoryArea& area : areas) {
      contents_.push_back({area, area.Fresh()});
    }
  }

  void Read(std::string_view text) {
    if (text.empty()) {
      throw ChipFileError(std::string(name_) + ": empty; " + std::string(kBegins));
    }
    while (!text.empty()) {
      const std::size_t end = std::min(text.find('\n'), text.size());
      std::string_view line = text.substr(0, end);
      text.remove_prefix(std::min(end + 1, text.size()));
      if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
      ++line_;
      TakeLine(line);
    }
    if (!ended_) Fail("the file ends before its line \"end\"; a part of it is missing");
  }

  /// Puts what was read into the chip.
  void Store() {
    for (Content& content : contents_) {
      std::ranges::copy(content.bytes, content.area.bytes.begin());
    }
  }

 private:
  struct Content {
    MemoryArea area;
    std::vector<std::uint8_t> bytes;
  };

  void TakeLine(std::string_view line) {
    if (line_ == 1) {
      if (line != kFirstLine) Fail("not a chip file: " + std::string(kBegins));
      return;
    }
    const std::string_view word = TakeWord(line);
    if (line_ == 2) return TakeDevice(word, line);
    if (word.empty()) return;
    if (ended_) Fail("nothing may follow the line \"end\"");
    if (word == "end") {
      ended_ = true;
      return;
    }
    if (word == "area") return TakeArea(line);
    if (word.back() == ':') return TakeRow(word, line);
    Fail("expected \"area NAME BYTES\" or a row \"ADDRESS: BYTES\"");
  }

  void TakeDevice(std::string_view word, std::string_view rest) const {
    const std::string_view device = TakeWord(rest);
    if (word != "device" || device.empty() || !TakeWord(rest).empty()) {
      Fail("expected \"device NAME\"");
    }
    if (device != device_) {
      Fail("the file holds " + Excerpt(device) + ", not " + std::string(device_));
    }
  }

  void TakeArea(std::string_view rest) {
    const std::string_view area = TakeWord(rest);
    const std::string_view bytes = TakeWord(rest);
    if (bytes.empty() || !TakeWord(rest).empty()) Fail("expected \"area NAME BYTES\"");
    const auto found = std::ranges::find_if(
        contents_, [area](const Content& content) { return content.area.name == area; });
    if (found == contents_.end()) {
      Fail(std::string(device_) + " has no area \"" + Excerpt(area) + "\"");
    }
    if (Number(bytes, 10) != found->bytes.size()) {
      Fail(NameOf(*found) + " has " + SizeOf(*found) + ", not " + Excerpt(bytes));
    }
    current_ = &*found;
  }

  void TakeRow(std::string_view address, std::string_view rest) {
    if (current_ == nullptr) Fail("a row needs a line \"area NAME BYTES\" before it");
    const auto start = Number(address.substr(0, address.size() - 1), 16);
    if (!start) Fail("\"" + Excerpt(address) + "\" is not a hexadecimal address, as in 01A0:");
    std::size_t at = *start;
    CheckWithin(at <= current_->bytes.size());
    for (auto word = TakeWord(rest); !word.empty(); word = TakeWord(rest)) {
      CheckWithin(at < current_->bytes.size());
      current_->bytes[at++] = Byte(word);
    }
  }

  void CheckWithin(bool within) const {
    if (!within) Fail("the row goes beyond the " + SizeOf(*current_) + " of " + NameOf(*current_));
  }

  [[nodiscard]] std::uint8_t Byte(std::string_view word) const {
    const auto byte = Number(word, 16);
    if (!byte || word.size() != 2) {
      Fail("\"" + Excerpt(word) + "\" is not a byte of two hexadecimal digits");
    }
    if (*byte > current_->area.largest) {
      Fail(std::string(word) + " is too large for " + NameOf(*current_) + "; at most " +
           Format("%02zX", current_->area.largest));
    }
    return static_cast<std::uint8_t>(*byte);
  }

  static std::string NameOf(const Content& content) { return "area \"" + content.area.name + "\""; }
  static std::string SizeOf(const Content& content) {
    const std::size_t bytes = content.bytes.size();
    return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  }

  [[noreturn]] void Fail(const std::string& reason) const {
    throw ChipFileError(std::string(name_) + ":" + std::to_string(line_) + ": " + reason);
  }

  std::string_view device_;
  std::string_view name_;
  std::vector<Content> contents_;
  Content* current_ = nullptr;
  int line_ = 0;
  bool ended_ = false;
};

}  // namespace

std::string SaveChip(Chip& chip, std::string_view device) {
  std::string text = std::string(kFirstLine) + "\ndevice " + std::string(device) + "\n";
  for (const MemoryArea& area : chip.Memory()) SaveArea(area, text);
  return text + "end\n";
}

void LoadChip(Chip& chip, std::string_view device, std::string_view text, std::string_view name) {
  Reader reader(chip.Memory(), device, name);
  reader.Read(text);
  reader.Store();
}

}  // namespace fliglaf::simulator
