#include "devices/catalogue/profile_fields.h"

#include <array>
#include <concepts>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include <fmt/format.h>

namespace fliglaf {
namespace {

using enum ProfileField::Presence;
using enum ProfileField::Shape;

template <std::integral T>
void Assign(T& target, const FieldValue& value) {
  target = static_cast<T>(value.numbers[0]);  // CheckFits saw to the limits
}

void Assign(std::string& target, const FieldValue& value) { target = value.text; }

void Assign(std::optional<std::uint8_t>& target, const FieldValue& value) {
  target = static_cast<std::uint8_t>(value.numbers[0]);
}

void Assign(std::vector<std::uint8_t>& target, const FieldValue& value) {
  target.clear();
  for (const std::int64_t number : value.numbers) {
    target.push_back(static_cast<std::uint8_t>(number));
  }
}

void Assign(std::optional<Signature>& target, const FieldValue& value) {
  target = Signature{static_cast<std::uint8_t>(value.numbers[0]),
                     static_cast<std::uint8_t>(value.numbers[1]),
                     static_cast<std::uint8_t>(value.numbers[2])};
}

void Assign(AddressRange& target, const FieldValue& value) {
  target = {static_cast<std::int32_t>(value.numbers[0]),
            static_cast<std::int32_t>(value.numbers[1])};
}

template <auto... kMembers>
void Store(DeviceProfile& device, const FieldValue& value) {
  Assign((device.*....*kMembers), value);
}

template <auto... kMembers>
using Member = std::remove_cvref_t<decltype((std::declval<DeviceProfile&>().*....*kMembers))>;

/// Does not compile for limits that a member cannot hold.
template <typename T>
consteval void CheckFits(Limits number) {
  if constexpr (std::integral<T>) {
    if (!std::in_range<T>(number.least) || !std::in_range<T>(number.most)) {
      throw std::logic_error("a field's limits go beyond its member");
    }
  }
}

template <auto... kMembers>
consteval ProfileField Text(std::string_view name) {
  return {name, kRequired, kText, {}, {}, "", Store<kMembers...>};
}

template <auto... kMembers>
consteval ProfileField Number(std::string_view name, ProfileField::Presence presence, Limits number,
                              std::string_view meaning) {
  CheckFits<Member<kMembers...>>(number);
  return {name, presence, kNumber, {1, 1}, number, meaning, Store<kMembers...>};
}

template <auto... kMembers>
consteval ProfileField List(std::string_view name, ProfileField::Presence presence, Limits items,
                            Limits number, std::string_view meaning) {
  return {name, presence, kList, items, number, meaning, Store<kMembers...>};
}

constexpr std::int64_t kMostAddresses = 0x1000000;
constexpr Limits kByte{0, 255};
constexpr Limits kPin{1, 255};
constexpr Limits kOperation{8, 11};
constexpr Limits kInteger{0, 32'767};  // what an Integer variable holds
constexpr Limits kTime{0, 10'000'000};

using P = DeviceProfile;
using O = DeviceOperations;
using C = ChipTimes;

// clang-format off
constexpr std::array kFields{
    Text<&P::name>("name"),
    Text<&P::description>("description"),
    Number<&P::family>("family", kRequired, {1, 16}, "the device family"),
    Number<&P::option>("option", kOptional, kByte, "the variant within the family"),
    Number<&P::size>("size", kRequired, {1, kMostAddresses}, "addresses"),
    Number<&P::address_bytes>("address_bytes", kRequired, {1, 2}, "bytes at an address"),
    Number<&P::image_bytes>("image_bytes", kOptional, {1, 2 * kMostAddresses}, "bytes"),
    Number<&P::page>("page", kOptional, kInteger, "addresses of a page"),
    Number<&P::data_size>("data_size", kOptional, kInteger, "size of the data memory"),
    List<&P::range>("range", kOptional, {2, 2}, {0, kMostAddresses - 1}, "the first and the last address"),
    Number<&P::config_words>("config_words", kOptional, {1, 2}, "configuration words"),
    Number<&P::erased>("erased", kOptional, kByte, "0xFF or 0x00"),
    List<&P::signature>("signature", kOptional, {3, 3}, kByte, "maker, device and third byte"),
    Number<&P::supply>("supply", kRequired, {100, 700}, "in units of 10 mV"),
    Number<&P::programming_voltage>("programming_voltage", kOptional, {0, 3'000}, "in units of 10 mV"),
    List<&P::vcc_pins>("vcc_pins", kRequired, {1, 2}, kPin, "socket pins"),
    List<&P::gnd_pins>("gnd_pins", kRequired, {1, 2}, kPin, "socket pins"),
    List<&P::vpp_pins>("vpp_pins", kOptional, {0, 2}, kPin, "socket pins"),
    Number<&P::pin_count>("pin_count", kRequired, {2, 512}, "pins of the package"),
    Number<&P::adapter>("adapter", kOptional, kByte, "the adapter mode"),
    Number<&P::write_time>("write_time", kRequired, {1, 1'000'000}, "the unit of the family's write delays"),
    Number<&P::retries>("retries", kRequired, kInteger, "attempts"),
    Number<&P::operations, &O::erase>("erase", kOptional, kOperation, "an operation code"),
    List<&P::operations, &O::lock>("lock", kOptional, {0, 4}, kOperation, "operation codes, level 1 first"),
    Number<&P::operations, &O::config>("config", kOptional, kOperation, "an operation code"),
    Number<&P::chip, &C::byte_write_us>("chip.byte_write_us", kOptional, kTime, "us"),
    Number<&P::chip, &C::page_write_us>("chip.page_write_us", kOptional, kTime, "us"),
    Number<&P::chip, &C::eeprom_write_us>("chip.eeprom_write_us", kOptional, kTime, "us"),
    Number<&P::chip, &C::config_write_us>("chip.config_write_us", kOptional, kTime, "us"),
    Number<&P::chip, &C::erase_ms>("chip.erase_ms", kOptional, kTime, "ms"),
    Number<&P::chip, &C::lock_write_ms>("chip.lock_write_ms", kOptional, kTime, "ms"),
    Number<&P::chip, &C::start_up_ms>("chip.start_up_ms", kOptional, kTime, "ms"),
};
// clang-format on

}  // namespace

std::span<const ProfileField> ProfileFields() { return kFields; }

std::string Wanted(const ProfileField& field) {
  if (field.shape == kText) return "a text in double quotes";
  const std::string number =
      fmt::format("from {} to {} ({})", field.number.least, field.number.most, field.meaning);
  if (field.shape == kNumber) return "a whole number " + number;
  if (field.items.least == field.items.most) {
    return fmt::format("a list of {} whole numbers {}", field.items.least, number);
  }
  return fmt::format("a list of {} to {} whole numbers {}", field.items.least, field.items.most,
                     number);
}

}  // namespace fliglaf
