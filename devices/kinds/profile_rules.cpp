#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "devices/kinds/kinds.h"
#include "shared/utf8.h"

namespace fliglaf {
namespace {

constexpr std::size_t kLongestName = 64;
constexpr std::size_t kLongestDescription = 200;

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

// clang-format off
/// What every device keeps, of whatever kind.
constexpr std::array kCommonRules{
    ProfileRule{"name", NameIsTypeable, "must be 1 to 64 letters, digits and - . _"},
    ProfileRule{"description", DescriptionIsOneLine, "must be one line of 1 to 200 characters, without control characters and marks of writing direction"},
    ProfileRule{"image_bytes", [](D d) { return d.image_bytes >= d.size; }, "cannot be less than 'size', as every address has a byte or more in the image"},
    ProfileRule{"page", [](D d) { return d.page <= d.size; }, "cannot be more than 'size'"},
    ProfileRule{"data_size", [](D d) { return d.data_size < d.size; }, "must be less than 'size', as the data memory is a part of the device"},
    ProfileRule{"range", [](D d) { return d.range.first <= d.range.last && d.range.last < d.size; }, "must be the first and the last address, in this order and below 'size'"},
    ProfileRule{"erased", [](D d) { return d.erased == 0x00 || d.erased == 0xFF; }, "must be 0xFF or 0x00"},
    ProfileRule{"vcc_pins", PinsHaveOneRole, "a socket pin is named twice in 'vcc_pins', 'gnd_pins' and 'vpp_pins'; it has one role only"},
    ProfileRule{"vpp_pins", [](D d) { return d.vpp_pins.empty() || d.programming_voltage > 0; }, "needs a 'programming_voltage'"},
    ProfileRule{"erase", CodesHaveOneMeaning, "an operation code is named twice in 'erase', 'lock' and 'config'; each does one thing only"},
};
// clang-format on

const ProfileRule* FirstBroken(std::span<const ProfileRule> rules, const DeviceProfile& device) {
  const auto broken = std::ranges::find_if(
      rules, [&device](const ProfileRule& rule) { return !rule.kept(device); });
  return broken == rules.end() ? nullptr : &*broken;
}

}  // namespace

const ProfileRule* FirstBrokenRule(const DeviceProfile& device) {
  const ProfileRule* const common = FirstBroken(kCommonRules, device);
  return common != nullptr ? common : FirstBroken(KindOf(device).rules, device);
}

}  // namespace fliglaf
