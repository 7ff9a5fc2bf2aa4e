// Every reader of hexadecimal digits takes the texts that std::from_chars takes, as the same
// number, and refuses all others: the lock byte editor, image files, run records and chip files.
#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "editors/edit_figmpu41.h"
#include "fuzz/check.h"
#include "images/record_text.h"
#include "record/text.h"
#include "shared/text.h"
#include "simulator/chip_file.h"
#include "simulator/chips/isp51_chip.h"
#include "simulator/clock.h"

namespace {

using namespace fliglaf;
using fuzz::Require;

/// The number that the whole text is; the largest for one beyond 64 bits.
std::optional<std::uint64_t> Reading(std::string_view text) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, 16);
  if (stop != end || error == std::errc::invalid_argument) return std::nullopt;
  return error == std::errc{} ? number : std::numeric_limits<std::uint64_t>::max();
}

/// The text in UTF-8 where it is that: so there are characters that no byte holds.
std::u16string Wide(std::string_view text) {
  try {
    return record::Utf16(text);
  } catch (const record::TextError&) {
    return Widen(text);
  }
}

void CheckEditor(std::string_view text) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int32_t>::max();
  std::int64_t expected = edit_figmpu41::kNoNumber;
  if (const auto number = text.empty() ? std::optional(std::uint64_t{0}) : Reading(text)) {
    expected = static_cast<std::int64_t>(std::min(*number, kLargest));
  }
  Require(edit_figmpu41::ParseHex(Wide(text)) == expected, "the number of the lock byte editor");
}

void CheckImageRecord(std::string_view text) {
  const bool right = text.size() % 2 == 0 && text.size() <= 520 && (text.empty() || Reading(text));
  try {
    const Record record(text, 0, {});
    Require(right && record.bytes().size() == text.size() / 2, "an image record's size");
    for (std::size_t i = 0; i < record.bytes().size(); ++i) {
      Require(record.bytes()[i] == Reading(text.substr(2 * i, 2)), "an image record's byte");
    }
  } catch (const ImageError&) {
    Require(!right, "an image record of whole bytes is taken");
  }
}

void CheckRunRecord(std::string_view word) {
  const auto right = Reading(word);
  const std::string line = "0x" + std::string(word);
  try {
    record::Scanner scanner(line);
    const std::int64_t number = scanner.Integer();
    scanner.ExpectEnd();
    Require(right == static_cast<std::uint64_t>(number), "a run record's number");
  } catch (const record::TextError&) {
    Require(!right || *right > std::numeric_limits<std::int64_t>::max(),
            "a run record takes a number of 63 bits");
  }
  std::uint8_t byte = 0;
  record::Scanner scanner(word);
  const bool taken = scanner.TakeHexByte(byte) && scanner.AtEnd();
  Require(taken == (word.size() == 2 && right), "a run record's byte has two digits");
  Require(!taken || byte == right, "a run record's byte");
}

void CheckChipFile(std::string_view word) {
  const auto right = Reading(word);
  const simulator::Clock clock;
  simulator::Isp51Chip chip(clock, {.flash_bytes = 256});
  const auto flash = chip.Memory()[0].bytes;
  const auto loads = [&chip](const std::string& row) {
    try {
      LoadChip(chip, "d", "fliglaf chip 1\ndevice d\narea flash 256\n" + row + "\nend\n", "f");
      return true;
    } catch (const simulator::ChipFileError&) {
      return false;
    }
  };
  const bool byte = word.size() == 2 && right;
  Require(loads("7: " + std::string(word)) == (byte || word.empty()), "a chip file's byte");
  Require(flash[7] == (byte ? right : 0xFF), "the byte of a chip");
  const bool address = right && *right < flash.size();
  Require(loads(std::string(word) + ": 5A") == address, "a chip file's address");
  Require(!address || flash[*right] == 0x5A, "the place of a chip's byte");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  CheckEditor(text);
  CheckImageRecord(text);
  if (text.find_first_of(" \r\n") == std::string_view::npos) {  // one word of a line
    CheckRunRecord(text);
    CheckChipFile(text);
  }
  return 0;
}
