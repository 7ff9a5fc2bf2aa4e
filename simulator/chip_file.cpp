#include "simulator/chip_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <vector>

namespace fliglaf::simulator {
namespace {

constexpr std::string_view kFirstLine = "fliglaf chip 1";
constexpr std::size_t kRowBytes = 32;

std::string Format(const char* pattern, std::size_t value) {
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), pattern, value);
  return text.data();
}

void SaveArea(const MemoryArea& area, std::string& text) {
  text += "area " + area.name + " " + std::to_string(area.bytes.size()) + "\n";
  for (std::size_t start = 0; start < area.bytes.size(); start += kRowBytes) {
    const auto row = area.bytes.subspan(start, std::min(kRowBytes, area.bytes.size() - start));
    if (std::ranges::all_of(row, [&area](std::uint8_t byte) { return byte == area.erased; })) {
      continue;
    }
    text += Format("%04zX:", start);
    for (const std::uint8_t byte : row) text += Format(" %02zX", byte);
    text += "\n";
  }
}

/// Words of a line, one blank or more between them.
std::vector<std::string_view> Words(std::string_view line) {
  std::vector<std::string_view> words;
  while (!line.empty()) {
    const std::size_t end = std::min(line.find(' '), line.size());
    if (end > 0) words.push_back(line.substr(0, end));
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  return words;
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
      contents_.push_back({area, std::vector<std::uint8_t>(area.bytes.size(), area.erased)});
    }
  }

  void Read(std::string_view text) {
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
      if (line != kFirstLine) Fail("the first line of a chip file is \"fliglaf chip 1\"");
      return;
    }
    const auto words = Words(line);
    if (line_ == 2) return TakeDevice(words);
    if (words.empty()) return;
    if (ended_) Fail("nothing follows the line \"end\"");
    if (words[0] == "end") {
      ended_ = true;
      return;
    }
    if (words[0] == "area") return TakeArea(words);
    if (words[0].back() == ':') return TakeRow(words);
    Fail("expected \"area NAME BYTES\" or a row \"ADDRESS: BYTES\"");
  }

  void TakeDevice(const std::vector<std::string_view>& words) {
    if (words.size() != 2 || words[0] != "device") Fail("expected \"device NAME\"");
    if (words[1] != device_) {
      Fail("the file holds a " + std::string(words[1]) + ", not a " + std::string(device_));
    }
  }

  void TakeArea(const std::vector<std::string_view>& words) {
    if (words.size() != 3) Fail("expected \"area NAME BYTES\"");
    const auto found = std::ranges::find_if(
        contents_, [&words](const Content& content) { return content.area.name == words[1]; });
    if (found == contents_.end()) {
      Fail("a " + std::string(device_) + " has no area \"" + std::string(words[1]) + "\"");
    }
    if (Number(words[2], 10) != found->bytes.size()) {
      Fail("area \"" + found->area.name + "\" has " + std::to_string(found->bytes.size()) +
           " bytes, not " + std::string(words[2]));
    }
    current_ = &*found;
  }

  void TakeRow(const std::vector<std::string_view>& words) {
    if (current_ == nullptr) Fail("a row stands before the first area");
    const auto start = Number(words[0].substr(0, words[0].size() - 1), 16);
    if (!start) Fail("the address of a row is hexadecimal, as in 01A0:");
    const std::size_t count = words.size() - 1;
    if (*start > current_->bytes.size() || count > current_->bytes.size() - *start) {
      Fail("the row goes beyond the " + std::to_string(current_->bytes.size()) +
           " bytes of area \"" + current_->area.name + "\"");
    }
    for (std::size_t i = 0; i < count; ++i) {
      const auto byte = Number(words[i + 1], 16);
      if (!byte || *byte > 0xFF || words[i + 1].size() != 2) {
        Fail("\"" + std::string(words[i + 1]) + "\" is no byte of two hexadecimal digits");
      }
      if (*byte > current_->area.largest) {
        Fail("a byte of area \"" + current_->area.name + "\" is at most " +
             std::to_string(current_->area.largest));
      }
      current_->bytes[*start + i] = static_cast<std::uint8_t>(*byte);
    }
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
