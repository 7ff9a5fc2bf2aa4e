#include "devices/profile_rules.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <string>
#include <vector>

#include "devices/memory_layout.h"
#include "shared/utf8.h"

namespace fliglaf {
namespace {

constexpr std::size_t kLongestName = 64;
constexpr std::size_t kLongestDescription = 200;

constexpr std::int32_t kSerialPage = 256;
constexpr std::int32_t kSerialLargest = 8192;  // an instruction has address bits 0 to 12
constexpr std::int32_t kSerialLargestData = 2048;
constexpr std::int32_t kWordFlash = 1024;
constexpr std::int32_t kWordEeprom = 64;

bool Distinct(std::vector<std::uint8_t> values) {
  std::ranges::sort(values);
  return std::ranges::adjacent_find(values) == values.end();
}

bool NameIsTypeable(const DeviceProfile& device) {
  return !device.name.empty() && device.name.size() <= kLongestName &&
         std::ranges::all_of(device.name, [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                  c == '-' || c == '.' || c == '_';
         });
}

/// Nothing that a terminal obeys. Short, as each device has a copy of the one in [defaults].
bool DescriptionIsOneLine(const DeviceProfile& device) {
  const std::string& text = device.description;
  return !text.empty() && Excerpt(text, kLongestDescription) == text;
}

bool PinsHaveOneRole(const DeviceProfile& device) {
  std::vector<std::uint8_t> pins = device.vcc_pins;
  pins.insert(pins.end(), device.gnd_pins.begin(), device.gnd_pins.end());
  pins.insert(pins.end(), device.vpp_pins.begin(), device.vpp_pins.end());
  return Distinct(pins);
}

bool CodesHaveOneMeaning(const DeviceProfile& device) {
  std::vector<std::uint8_t> codes = device.operations.lock;
  for (const auto& code : {device.operations.erase, device.operations.config}) {
    if (code) codes.push_back(*code);
  }
  return Distinct(codes);
}

bool ImageIsBytes(const DeviceProfile& device) {
  return device.address_bytes == 1 && device.image_bytes == device.size;
}

/// Families 13 and 14: words, a page buffer, EEPROM and configuration bytes.
bool IsSerialPage(const DeviceProfile& device) {
  return device.family == 13 || device.family == 14;
}

bool IsAvrJtag(const DeviceProfile& device) { return device.family >= 4 && device.family <= 7; }

bool IsFlashRegister(const DeviceProfile& device) {
  return device.family >= 8 && device.family <= 11;
}

/// Options of families 8 to 11: the lines, and for 15 the wider registers.
constexpr std::uint8_t kWideOption = 15;
bool HasLines(const DeviceProfile& device) {
  return (device.option >= 11 && device.option <= kWideOption) ||
         (device.option >= 22 && device.option <= 24);
}

bool AddressesReach(const DeviceProfile& device) {
  const std::int32_t reach = device.option == kWideOption ? 0x2'0000 : 0x1'0000;
  return device.size - (device.family >= 10 ? device.data_size : 0) <= reach;
}

bool MainIsWholePages(const DeviceProfile& device) {
  return device.page > 0 && LayoutOf(device).main_bytes > 0 &&
         (device.size - device.data_size) % device.page == 0;
}

/// Families 12 and 16.
bool IsTwoWire(const DeviceProfile& device) { return device.family == 12 || device.family == 16; }

bool TwoWirePage(const DeviceProfile& device) {
  return std::has_single_bit(static_cast<unsigned>(device.page)) && device.page >= 2 &&
         device.page <= 512;
}

bool TwoWireFlash(const DeviceProfile& device) {
  return device.page > 0 && device.size % device.page == 0 && device.size >= 2 * device.page &&
         device.size <= 0x1'0000;
}

bool EndsInLastBlock(const DeviceProfile& device) {
  constexpr std::int32_t kBlock = 16'384;
  return device.range.last / kBlock == LayoutOf(device).main_bytes / kBlock;
}

bool HasConfigSocket(const DeviceProfile& device) {
  constexpr std::array kPins{6, 8, 14, 18, 20, 28, 40, 44, 64, 68, 80, 84};
  return std::ranges::find(kPins, device.pin_count) != kPins.end();
}

bool WholeBlocks(std::int64_t bytes) {
  constexpr std::int32_t kBlock = 16'384;
  constexpr std::int32_t kLargest = 131'072;  // 16 address bits, words
  return bytes >= kBlock && bytes <= kLargest && bytes % kBlock == 0;
}

/// A memory that a family fetches in one transfer; more would never be read.
constexpr std::int32_t kOneTransfer = 16'384;

bool FlashIsWholePages(const DeviceProfile& device) {
  const std::int64_t page = std::int64_t{device.page} * device.address_bytes;
  return page > 0 && LayoutOf(device).main_bytes % page == 0;
}

using D = const DeviceProfile&;

// clang-format off
constexpr std::array kRules{
    ProfileRule{0, "name", NameIsTypeable, "must be 1 to 64 letters, digits and - . _"},
    ProfileRule{0, "description", DescriptionIsOneLine, "must be one line of 1 to 200 characters, without control characters and marks of writing direction"},
    ProfileRule{0, "image_bytes", [](D d) { return d.image_bytes >= d.size; }, "cannot be less than 'size', as every address has a byte or more in the image"},
    ProfileRule{0, "page", [](D d) { return d.page <= d.size; }, "cannot be more than 'size'"},
    ProfileRule{0, "data_size", [](D d) { return d.data_size < d.size; }, "must be less than 'size', as the data memory is a part of the device"},
    ProfileRule{0, "range", [](D d) { return d.range.first <= d.range.last && d.range.last < d.size; }, "must be the first and the last address, in this order and below 'size'"},
    ProfileRule{0, "erased", [](D d) { return d.erased == 0x00 || d.erased == 0xFF; }, "must be 0xFF or 0x00"},
    ProfileRule{0, "vcc_pins", PinsHaveOneRole, "a socket pin is named twice in 'vcc_pins', 'gnd_pins' and 'vpp_pins'; it has one role only"},
    ProfileRule{0, "vpp_pins", [](D d) { return d.vpp_pins.empty() || d.programming_voltage > 0; }, "needs a 'programming_voltage'"},
    ProfileRule{0, "erase", CodesHaveOneMeaning, "an operation code is named twice in 'erase', 'lock' and 'config'; each does one thing only"},
    ProfileRule{1, "page", [](D d) { return d.page == kSerialPage; }, "must be 256 in family 1"},
    ProfileRule{1, "size", [](D d) { return d.size % kSerialPage == 0 && d.size <= kSerialLargest; }, "must be a multiple of 256 up to 8192 in family 1, which writes whole pages"},
    ProfileRule{1, "image_bytes", [](D d) { return d.config_words > 0 || ImageIsBytes(d); }, "must be 'size' in family 1, with 'address_bytes' 1"},
    ProfileRule{0, "config_words", [](D d) { return d.config_words == 0 || d.family == 1; }, "belongs to family 1 only"},
    ProfileRule{0, "config_words", [](D d) { return d.config_words == 0 || d.operations.config == 8; }, "is written by 'config' = 8"},
    ProfileRule{0, "config_words", [](D d) { return d.config_words == 0 || !d.vpp_pins.empty(); }, "needs 'vpp_pins' for the programming voltage"},
    ProfileRule{0, "image_bytes", [](D d) { return d.config_words == 0 || d.image_bytes >= 16'400; }, "must be 16400 or more with 'config_words', the last of which is at 16398"},
    ProfileRule{0, "pin_count", [](D d) { return d.config_words == 0 || HasConfigSocket(d); }, "must be 6, 8, 14, 18, 20, 28, 40, 44, 64, 68, 80 or 84 with 'config_words'"},
    ProfileRule{2, "size", [](D d) { return d.size - d.data_size <= kSerialLargest; }, "must be up to 8192, besides 'data_size', in family 2, whose instructions have 13 address bits"},
    ProfileRule{2, "data_size", [](D d) { return d.data_size >= 1 && d.data_size <= kSerialLargestData; }, "must be 1 to 2048 in family 2, whose instructions have 11 address bits for the data memory"},
    ProfileRule{2, "image_bytes", ImageIsBytes, "must be 'size' in family 2, with 'address_bytes' 1"},
    ProfileRule{3, "image_bytes", [](D d) { return d.address_bytes == 2 && d.image_bytes == 2 * d.size; }, "must be twice 'size' in family 3, with 'address_bytes' 2"},
    ProfileRule{3, "data_size", [](D d) { return d.data_size >= 2 && d.data_size <= kWordEeprom && d.data_size % 2 == 0; }, "must be an even number from 2 to 64 in family 3, whose instructions have 6 address bits for the EEPROM"},
    ProfileRule{3, "size", [](D d) { return LayoutOf(d).main_bytes == kWordFlash; }, "must be 528 and half of 'data_size' in family 3: the EEPROM is programmed from image byte 1024, which must follow the 512 words of flash"},
    ProfileRule{3, "range", [](D d) { return d.range.first == 0; }, "must begin at 0 in family 3, which would leave out EEPROM bytes below it"},
    ProfileRule{0, "option", [](D d) { return !IsSerialPage(d) || d.option == 14 || d.option == 15; }, "must be 14 or 15 in families 13 and 14"},
    ProfileRule{0, "image_bytes", [](D d) { return !IsSerialPage(d) || (d.address_bytes == 2 && d.image_bytes == 2 * d.size); }, "must be twice 'size' in families 13 and 14, with 'address_bytes' 2"},
    ProfileRule{0, "data_size", [](D d) { return !IsSerialPage(d) || LayoutOf(d).data_bytes <= kOneTransfer; }, "cannot be more than 16384 in families 13 and 14, which read the EEPROM in one transfer"},
    ProfileRule{0, "size", [](D d) { return !IsSerialPage(d) || LayoutOf(d).main_bytes > 0; }, "must be the flash words, one more for each EEPROM byte of 'data_size', and 16 in families 13 and 14"},
    ProfileRule{0, "size", [](D d) { return !IsSerialPage(d) || LayoutOf(d).main_bytes <= kOneTransfer; }, "makes more than 8192 words of flash; families 13 and 14 read it in one transfer, which holds no more than these 16384 bytes"},
    ProfileRule{0, "page", [](D d) { return !IsSerialPage(d) || (std::has_single_bit(static_cast<unsigned>(d.page)) && d.page <= 256); }, "must be 1, 2, 4, ... 256 words in families 13 and 14"},
    ProfileRule{0, "page", [](D d) { return !IsSerialPage(d) || FlashIsWholePages(d); }, "must divide the flash into whole pages in families 13 and 14"},
    ProfileRule{0, "retries", [](D d) { return !IsSerialPage(d) || d.retries >= 1; }, "must be 1 or more in families 13 and 14, the attempts at the programming enable"},
    ProfileRule{0, "option", [](D d) { return !IsAvrJtag(d) || (d.option >= 4 && d.option <= 8); }, "must be 4 to 8 in families 4 to 7"},
    ProfileRule{0, "image_bytes", [](D d) { return !IsAvrJtag(d) || (d.address_bytes == 2 && d.image_bytes == 2 * d.size); }, "must be twice 'size' in families 4 to 7, with 'address_bytes' 2"},
    ProfileRule{0, "data_size", [](D d) { return !IsAvrJtag(d) || LayoutOf(d).data_bytes <= kOneTransfer; }, "cannot be more than 8192 words in families 4 to 7, which read the EEPROM in one transfer"},
    ProfileRule{0, "size", [](D d) { return !IsAvrJtag(d) || WholeBlocks(LayoutOf(d).main_bytes); }, "must be the flash words, those of the EEPROM, and 16 in families 4 to 7, which read the flash in blocks of 8192 words: 1 to 8 of them"},
    ProfileRule{0, "page", [](D d) { return !IsAvrJtag(d) || (std::has_single_bit(static_cast<unsigned>(d.page)) && d.page >= 16 && d.page <= 256); }, "must be 16, 32, ... 256 words in families 4 to 7"},
    ProfileRule{0, "option", [](D d) { return !IsFlashRegister(d) || HasLines(d); }, "must be 11 to 15 or 22 to 24 in families 8 to 11"},
    ProfileRule{8, "option", [](D d) { return d.option != kWideOption; }, "must be 11 to 14 or 22 to 24 in family 8, which writes addresses of 16 bits"},
    ProfileRule{9, "option", [](D d) { return d.option != kWideOption; }, "must be 11 to 14 or 22 to 24 in family 9, which writes addresses of 16 bits"},
    ProfileRule{0, "image_bytes", [](D d) { return !IsFlashRegister(d) || ImageIsBytes(d); }, "must be 'size' in families 8 to 11, with 'address_bytes' 1"},
    ProfileRule{0, "size", [](D d) { return !IsFlashRegister(d) || MainIsWholePages(d); }, "must be two pages or more, besides 'data_size', in families 8 to 11, the last but one with the lock bytes"},
    ProfileRule{0, "size", [](D d) { return !IsFlashRegister(d) || AddressesReach(d); }, "must be up to 65536 in families 8 and 9, as in 10 and 11 without 'data_size'; with option 15 these have up to 131072"},
    ProfileRule{9, "size", [](D d) { return LayoutOf(d).main_bytes <= kOneTransfer; }, "makes more than 16384 bytes of main array; family 9 reads it in one transfer, which holds no more"},
    ProfileRule{0, "data_size", [](D d) { return !IsFlashRegister(d) || d.data_size <= kOneTransfer; }, "cannot be more than 16384 in families 8 to 11, which read the second area in one transfer"},
    ProfileRule{0, "data_size", [](D d) { return !IsFlashRegister(d) || d.data_size <= d.page; }, "cannot be more than 'page' in families 8 to 11, which erase the second area as one page"},
    ProfileRule{12, "option", [](D d) { return d.option >= 12 && d.option <= 31; }, "must be 12 to 31 in family 12"},
    ProfileRule{16, "option", [](D d) { return d.option == 16; }, "must be 16 in family 16"},
    ProfileRule{12, "vpp_pins", [](D d) { return d.option < 30 || !d.vpp_pins.empty(); }, "must be a pin with the options 30 and 31 of family 12"},
    ProfileRule{16, "signature", [](D d) { return !d.signature; }, "must be left out in family 16, which cannot read it"},
    ProfileRule{0, "image_bytes", [](D d) { return !IsTwoWire(d) || ImageIsBytes(d); }, "must be 'size' in families 12 and 16, with 'address_bytes' 1"},
    ProfileRule{0, "page", [](D d) { return !IsTwoWire(d) || TwoWirePage(d); }, "must be 2, 4, ... 512 in families 12 and 16, which read and write half a page at a time"},
    ProfileRule{0, "size", [](D d) { return !IsTwoWire(d) || TwoWireFlash(d); }, "must be a number of whole pages, two or more, up to 65536 in families 12 and 16"},
    ProfileRule{0, "range", [](D d) { return !IsTwoWire(d) || EndsInLastBlock(d); }, "must end in the last 16384 bytes, or what there is of them, of the flash below the last page in families 12 and 16, which read up to there"},
    ProfileRule{15, "image_bytes", ImageIsBytes, "must be 'size' in family 15, with 'address_bytes' 1"},
    ProfileRule{15, "size", [](D d) { return LayoutOf(d).main_bytes > 0; }, "must be the flash bytes and 32 more in family 15"},
    ProfileRule{15, "size", [](D d) { return LayoutOf(d).main_bytes <= kOneTransfer; }, "makes more than 16384 bytes of flash; family 15 reads it in one transfer, which holds no more"},
    ProfileRule{15, "page", FlashIsWholePages, "must divide the flash into whole pages in family 15"},
};
// clang-format on

}  // namespace

const ProfileRule* FirstBrokenRule(const DeviceProfile& device) {
  const auto broken = std::ranges::find_if(kRules, [&device](const ProfileRule& rule) {
    return (rule.family == 0 || rule.family == device.family) && !rule.kept(device);
  });
  return broken == kRules.end() ? nullptr : &*broken;
}

}  // namespace fliglaf
