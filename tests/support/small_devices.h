// The smallest device of every family that has all its memories: smaller than a profile may be, so
// that every call of every operation can be made to fail.
#pragma once

#include <string>
#include <vector>

#include "tests/support/test_host.h"

namespace fliglaf::test {

struct SmallDevice {
  std::string name;
  DeviceProfile device;
  bool parallel = false;
  std::vector<std::uint8_t> codes = {2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
  std::int32_t untold = 0;  ///< addresses of flash that the host does not know of
};

inline void PrintTo(const SmallDevice& device, std::ostream* out) { *out << device.name; }

/// Addresses.
struct SmallSizes {
  std::int32_t size;
  std::int16_t page = 0;
  std::int16_t data = 0;
};

/// The device `name` of that variant with memories of that size and times as short as they can be.
inline DeviceProfile Small(std::string_view name, std::uint8_t option, const SmallSizes& sizes) {
  DeviceProfile device = Sized(name, sizes.size);
  device.option = option;
  device.page = sizes.page;
  device.data_size = sizes.data;
  device.retries = std::min<std::int16_t>(device.retries, 3);
  device.chip = {40, 40, 40, 40, 1, 1};
  device.write_time = 1000;
  return device;
}

/// The EEPROM is at 0x400 of the image when it is written.
inline DeviceProfile SmallSerialWord() {
  DeviceProfile device = Small("isp-word-1k", 0, {.size = 8 + 2 + 16, .data = 4});
  device.image_bytes = 0x400 + 64;
  device.write_time = 10'000;
  return device;
}

/// The range ends at the lock byte.
inline DeviceProfile SmallTwoWire(std::string_view name, std::uint8_t option) {
  DeviceProfile device = Small(name, option, {.size = 16 + 8, .page = 8});
  device.range.last = 15;
  device.vpp_pins = {1};
  return device;
}

/// A page of flash that nobody programs: families 4 to 7 fetch flash in blocks of 8192 words only.
inline SmallDevice WithoutFlash(const std::string& name, std::string_view known,
                                std::uint8_t option) {
  constexpr SmallSizes kSizes{.size = 16 + 2 + 16, .page = 16, .data = 2};
  return {.name = name, .device = Small(known, option, kSizes), .untold = 16};
}

/// On both engines. Those of families 4 to 7 are there without flash and, "Block", with one block.
inline std::vector<SmallDevice> SmallDevices() {
  constexpr SmallSizes kBlock{.size = 8192 + 256 + 16, .page = 2048, .data = 256};
  constexpr SmallSizes kRegisters{.size = 14 + 2 + 8 + 4, .page = 8, .data = 4};
  constexpr SmallSizes kWords{.size = 16 + 2 + 16, .page = 8, .data = 2};
  const DeviceProfile isp51 = Sized("isp51-4k", 256);
  return {{"Family1", isp51},
          {"Family2", Small("isp51ee-8k", 0, {.size = 8 + 4, .data = 4})},
          {"Family3", SmallSerialWord()},
          WithoutFlash("Family4", "jtag-byte-16k", 4),
          {"Family4Block", Small("jtag-byte-16k", 4, kBlock), false, {2, 3, 6, 8, 9}},
          WithoutFlash("Family5", "jtag-page-64k", 5),
          {"Family5Block", Small("jtag-page-64k", 5, kBlock), false, {2, 3, 6, 8, 9}},
          WithoutFlash("Family6", "jtag-page-128k", 6),
          WithoutFlash("Family7", "jtag-page-16k", 7),
          {"Family8", Small("jtag-flash-16k", 11, kRegisters)},
          {"Family9", Small("jtag-flash9-8k", 23, kRegisters)},
          {"Family10", Small("jtag-flash10-64k", 15, kRegisters)},
          {"Family11", Small("jtag-flash11-64k", 24, kRegisters)},
          {"Family12", SmallTwoWire("two-wire-8k", 31)},
          {"Family13", Small("isp-page-8k", 15, kWords)},
          {"Family14", Small("isp-page3-8k", 14, kWords)},
          {"Family15", Small("isp-frame-2k", 0, {.size = 32 + 32, .page = 16})},
          {"Family16", SmallTwoWire("two-wire-16k-reset", 16)},
          {"Parallel", isp51, true, {2, 3, 4, 5, 6, 7, 9, 10, 11}},
          {"ParallelConfigWords", Known("config-words-18"), true, {8}}};
}

/// Makes the host one for the engine of the device, and fills its image: a pattern that is the same
/// wherever a family looks for a memory's bytes.
inline void Prepare(TestHost& host, const SmallDevice& device) {
  constexpr std::uint8_t kPattern[] = {0x12, 0x34, 0x5A, 0xC7};
  std::vector<std::uint8_t> image(static_cast<std::size_t>(device.device.image_bytes));
  for (std::size_t i = 0; i < image.size(); ++i) image[i] = kPattern[i % 4];
  LeaveOpen(image, device.device);
  host.SetImage(image);
  host.vars.quorintlength[0] -= device.untold;
  host.vars.quorinwltbigendbuf[1] -= device.untold;
  if (device.parallel) host.UseParallelPort();
}

}  // namespace fliglaf::test
