// The smallest device of every family that has all its memories.
#pragma once

#include <string>
#include <vector>

#include "tests/support/test_host.h"

namespace fliglaf::test {

struct SmallDevice {
  std::string name;
  TestDevice device;
  bool parallel = false;
  std::vector<std::uint8_t> codes = {2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
};

inline void PrintTo(const SmallDevice& device, std::ostream* out) { *out << device.name; }

namespace small {

inline simulator::ChipDescription Chip(std::uint8_t family, std::uint8_t option,
                                       std::uint32_t flash, std::uint32_t page,
                                       std::uint32_t eeprom) {
  return {.family = family,
          .option = option,
          .flash_bytes = flash,
          .page_bytes = page,
          .eeprom_bytes = eeprom,
          .signature = {0x1E, 0x93, family},
          .supply = {.vcc = {40}, .gnd = {20}, .vpp = {1}},
          .byte_write_us = 40,
          .page_write_us = 40,
          .eeprom_write_us = 40,
          .config_write_us = 40,
          .erase_ms = 1,
          .lock_write_ms = 1};
}

constexpr std::int32_t kWriteTime = 1000;

inline TestDevice Isp51Data() {
  return {.chip = Chip(2, 0, 8, 0, 4),
          .size = 12,
          .image_bytes = 12,
          .data_size = 4,
          .write_time = kWriteTime};
}

/// Family 3 has its EEPROM at 0x400 of the image when it is written.
inline TestDevice SerialWord() {
  return {.chip = Chip(3, 0, 16, 0, 4),
          .size = 8 + 2 + 16,
          .image_bytes = 0x400 + 64,
          .data_size = 4,
          .write_time = 10 * kWriteTime};
}

inline TestDevice AvrJtag(std::uint8_t family, std::uint8_t option, std::int16_t flash_words) {
  const std::int16_t page = flash_words == 0 ? 16 : 2048;
  const auto eeprom_words = static_cast<std::int16_t>(page / 8);  // two pages
  const std::int32_t size = flash_words + eeprom_words + 16;
  const auto flash_bytes = 2U * static_cast<std::uint32_t>(std::max(flash_words, page));
  return {.chip = Chip(family, option, flash_bytes, 2U * static_cast<std::uint32_t>(page),
                       2U * static_cast<std::uint32_t>(eeprom_words)),
          .size = size,
          .image_bytes = 2 * size,
          .data_size = eeprom_words,
          .page = page,
          .write_time = kWriteTime};
}

inline TestDevice FlashRegister(std::uint8_t family, std::uint8_t option) {
  constexpr std::int16_t kPage = 8, kSecond = 4;
  constexpr std::int32_t kMain = 14;  // up to a page, with the lock bytes
  constexpr std::int32_t kSize = kMain + 2 + kPage + kSecond;
  return {.chip = Chip(family, option, kMain, kPage, kSecond),
          .size = kSize,
          .image_bytes = kSize,
          .data_size = kSecond,
          .page = kPage,
          .write_time = kWriteTime,
          .retries = 1};
}

inline TestDevice TwoWire(std::uint8_t family, std::uint8_t option) {
  constexpr std::int16_t kPage = 8;
  constexpr std::int32_t kFlash = 16;  // the lock byte included
  return {.chip = Chip(family, option, kFlash - 1, kPage, 0),
          .size = kFlash + kPage,
          .image_bytes = kFlash + kPage,
          .page = kPage,
          .write_time = kWriteTime,
          .retries = 3};
}

inline TestDevice SerialPage(std::uint8_t family, std::uint8_t option) {
  constexpr std::int32_t kSize = 16 + 2 + 16;
  return {.chip = Chip(family, option, 32, 16, 2),
          .size = kSize,
          .image_bytes = 2 * kSize,
          .data_size = 2,
          .page = 8,
          .write_time = kWriteTime,
          .retries = 1};
}

inline TestDevice FramedPage() {
  return {.chip = Chip(15, 0, 32, 16, 0),
          .size = 32 + 32,
          .image_bytes = 32 + 32,
          .page = 16,
          .write_time = kWriteTime};
}

inline TestDevice ConfigWords() {
  TestDevice device{.chip = Chip(1, 0, 0, 0, 0),
                    .size = 1024,
                    .image_bytes = 16400,
                    .data_size = 1,
                    .write_time = kWriteTime};
  device.chip.supply.vcc = {40, 39};
  device.chip.config_words = simulator::ConfigWordPart{{18, 1, 0}, 2, false};
  return device;
}

}  // namespace small

/// On both engines. Families 4 to 7 fetch flash in blocks of 8192 words only: they are there
/// without flash and, "Block", with one block of it.
inline std::vector<SmallDevice> SmallDevices() {
  using namespace small;
  return {{"Family1", TestHost::Isp51(256)},
          {"Family2", Isp51Data()},
          {"Family3", SerialWord()},
          {"Family4", AvrJtag(4, 4, 0)},
          {"Family4Block", AvrJtag(4, 4, 8192), false, {2, 3, 6, 8, 9}},
          {"Family5", AvrJtag(5, 5, 0)},
          {"Family5Block", AvrJtag(5, 5, 8192), false, {2, 3, 6, 8, 9}},
          {"Family6", AvrJtag(6, 6, 0)},
          {"Family7", AvrJtag(7, 7, 0)},
          {"Family8", FlashRegister(8, 11)},
          {"Family9", FlashRegister(9, 23)},
          {"Family10", FlashRegister(10, 15)},
          {"Family11", FlashRegister(11, 24)},
          {"Family12", TwoWire(12, 31)},
          {"Family13", SerialPage(13, 15)},
          {"Family14", SerialPage(14, 14)},
          {"Family15", FramedPage()},
          {"Family16", TwoWire(16, 16)},
          {"Parallel", TestHost::Isp51(256), true, {2, 3, 4, 5, 6, 7, 9, 10, 11}},
          {"ParallelConfigWords", ConfigWords(), true, {8}}};
}

/// Tells a host what is special about the device, and fills its image: a pattern that is the same
/// wherever a family looks for a memory's bytes.
inline void Prepare(TestHost& host, const SmallDevice& device) {
  constexpr std::uint8_t kPattern[] = {0x12, 0x34, 0x5A, 0xC7};
  std::vector<std::uint8_t> image(static_cast<std::size_t>(device.device.image_bytes));
  for (std::size_t i = 0; i < image.size(); ++i) image[i] = kPattern[i % 4];
  host.SetImage(image);
  host.vars.quorinbvpppin[0] = 1;
  const std::uint8_t family = device.device.chip.family;
  if (family == 12 || family == 16) {  // the range ends at the lock byte
    host.vars.quorinwltbigendbuf[1] = device.device.size - device.device.page - 1;
  }
  if (device.device.chip.config_words) {
    host.vars.quorinchippin[0] = 18;
    host.vars.quorinbvccpin[1] = 39;
  }
  if (device.parallel) host.UseParallelPort();
}

}  // namespace fliglaf::test
