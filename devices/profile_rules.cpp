#include "devices/profile_rules.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace fliglaf {
namespace {

constexpr std::int32_t kSerialPage = 256;
constexpr std::int32_t kSerialLargest = 8192;  // a page instruction has five page bits

bool Distinct(std::vector<std::uint8_t> values) {
  std::ranges::sort(values);
  return std::ranges::adjacent_find(values) == values.end();
}

bool NameIsTypeable(const DeviceProfile& device) {
  return !device.name.empty() && std::ranges::all_of(device.name, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_';
  });
}

bool DescriptionIsOneLine(const DeviceProfile& device) {
  return !device.description.empty() && std::ranges::all_of(device.description, [](char c) {
    return static_cast<unsigned char>(c) >= 0x20 && c != 0x7F;
  });
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

using D = const DeviceProfile&;

// clang-format off
constexpr std::array kRules{
    ProfileRule{0, "name", NameIsTypeable, "a name is made of letters, digits and - . _"},
    ProfileRule{0, "description", DescriptionIsOneLine, "a description is one line of text"},
    ProfileRule{0, "image_bytes", [](D d) { return d.image_bytes >= d.size; }, "cannot be less than 'size', as every address has a byte or more in the image"},
    ProfileRule{0, "page", [](D d) { return d.page <= d.size; }, "cannot be more than 'size'"},
    ProfileRule{0, "data_size", [](D d) { return d.data_size < d.size; }, "has to be less than 'size', as the data memory is a part of the device"},
    ProfileRule{0, "range", [](D d) { return d.range.first <= d.range.last && d.range.last < d.size; }, "right is the first and the last address, in this order and below 'size'"},
    ProfileRule{0, "erased", [](D d) { return d.erased == 0x00 || d.erased == 0xFF; }, "right is 0xFF or 0x00"},
    ProfileRule{0, "vcc_pins", PinsHaveOneRole, "a socket pin stands twice in 'vcc_pins', 'gnd_pins' and 'vpp_pins'; it has one role only"},
    ProfileRule{0, "vpp_pins", [](D d) { return d.vpp_pins.empty() || d.programming_voltage > 0; }, "needs a 'programming_voltage'"},
    ProfileRule{0, "erase", CodesHaveOneMeaning, "an operation code stands twice in 'erase', 'lock' and 'config'; each does one thing only"},
    ProfileRule{1, "page", [](D d) { return d.page == kSerialPage; }, "right is 256 in family 1"},
    ProfileRule{1, "size", [](D d) { return d.size % kSerialPage == 0 && d.size <= kSerialLargest; }, "right is a multiple of 256 up to 8192 in family 1, which writes whole pages"},
    ProfileRule{1, "image_bytes", [](D d) { return d.image_bytes == d.size; }, "right is 'size' in family 1, with 'address_bytes' 1"},
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
