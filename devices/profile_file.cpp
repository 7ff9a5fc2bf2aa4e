#include "devices/profile_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include <fmt/format.h>

#define TOML_HEADER_ONLY 1
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>

#include "devices/nearest_names.h"
#include "devices/profile_error.h"
#include "devices/profile_fields.h"
#include "devices/profile_rules.h"

namespace fliglaf {
namespace {

using Lines = std::vector<toml::source_index>;

/// A device on its way: inheriting is copying the draft of the defaults.
struct Draft {
  DeviceProfile device;
  Lines lines = Lines(ProfileFields().size());  ///< where each field stands, 0: not given
};

/// The field's place in ProfileFields(); their number for a name that is none.
std::size_t FieldIndex(std::string_view name) {
  return static_cast<std::size_t>(std::ranges::find(ProfileFields(), name, &ProfileField::name) -
                                  ProfileFields().begin());
}

class Reader {
 public:
  Reader(std::string_view text, std::string_view file) : text_(text), file_(file) {}

  std::vector<DeviceProfile> Devices() const {
    const toml::table root = Parsed();
    Draft defaults;
    for (const auto& [key, node] : root) {
      if (key == "defaults" && node.is_table()) {
        defaults = Defaults(*node.as_table());
      } else if (key != "device" || !node.is_array_of_tables()) {
        Fail(Line(key),
             "'{}' is not known here; a file has a table [defaults] and tables [[device]]",
             key.str());
      }
    }
    const toml::array* tables = root["device"].as_array();
    if (tables == nullptr) Fail(1, "the file has no device; each is a table [[device]]");
    std::vector<DeviceProfile> devices;
    for (const toml::node& table : *tables) devices.push_back(Device(defaults, *table.as_table()));
    return devices;
  }

 private:
  template <typename... Args>
  [[noreturn]] void Fail(toml::source_index line, fmt::format_string<Args...> message,
                         Args&&... args) const {
    throw ProfileError(fmt::format("{}:{}: ", file_, line) +
                       fmt::format(message, std::forward<Args>(args)...));
  }

  template <typename Item>
  static toml::source_index Line(const Item& item) {
    return item.source().begin.line;
  }

  toml::table Parsed() const {
    try {
      return toml::parse(text_);
    } catch (const toml::parse_error& error) {
      Fail(Line(error), "not valid TOML at column {}: {}", error.source().begin.column,
           error.description());
    }
  }

  Draft Defaults(const toml::table& table) const {
    Draft draft;
    Apply(draft, table, "");
    if (const auto line = draft.lines[FieldIndex("name")]; line != 0) {
      Fail(line, "field 'name' stands in [defaults]; it belongs to a [[device]]");
    }
    return draft;
  }

  DeviceProfile Device(Draft draft, const toml::table& table) const {
    Apply(draft, table, "");
    RequireFields(draft, Line(table));
    DeviceProfile& device = draft.device;
    device.source = fmt::format("{}:{}", file_, draft.lines[FieldIndex("name")]);
    if (device.image_bytes == 0) device.image_bytes = device.size * device.address_bytes;
    if (device.range == AddressRange{}) device.range.last = device.size - 1;
    KeepRules(draft, Line(table));
    return std::move(device);
  }

  /// Puts the fields of a table into the draft; `group` is the table's name with a dot.
  void Apply(Draft& draft, const toml::table& table, const std::string& group) const {
    for (const auto& [key, node] : table) {
      const std::string name = group + std::string(key.str());
      if (const std::size_t i = FieldIndex(name); i < draft.lines.size()) {
        const ProfileField& field = ProfileFields()[i];
        field.store(draft.device, Checked(field, node));
        draft.lines[i] = Line(node);
      } else if (node.is_table() && IsGroup(name)) {
        Apply(draft, *node.as_table(), name + ".");
      } else {
        FailUnknown(name, Line(key));
      }
    }
  }

  static bool IsGroup(const std::string& name) {
    return std::ranges::any_of(ProfileFields(), [&name](const ProfileField& field) {
      return field.name.starts_with(name + ".");
    });
  }

  [[noreturn]] void FailUnknown(const std::string& name, toml::source_index line) const {
    if (IsGroup(name)) Fail(line, "field '{0}' is not a table; right is a table [{0}]", name);
    std::vector<std::string_view> names;
    for (const ProfileField& field : ProfileFields()) names.push_back(field.name);
    const std::vector<std::string> nearest = NearestNames(name, names);
    if (nearest.empty()) Fail(line, "field '{}' is not known; leave it out", name);
    Fail(line, "field '{}' is not known; '{}' may be meant", name, nearest[0]);
  }

  FieldValue Checked(const ProfileField& field, const toml::node& node) const {
    FieldValue value;
    if (field.shape == ProfileField::Shape::kText) {
      if (!node.is_string()) FailType(field, node);
      value.text = node.as_string()->get();
    } else if (field.shape == ProfileField::Shape::kNumber) {
      value.numbers = {CheckedNumber(field, node)};
    } else {
      if (!node.is_array()) FailType(field, node);
      const toml::array& items = *node.as_array();
      for (const toml::node& item : items) value.numbers.push_back(CheckedNumber(field, item));
      if (!field.items.Hold(std::ssize(items))) {
        Fail(Line(node), "field '{}' has {} entries; right is {}", field.name, items.size(),
             Wanted(field));
      }
    }
    return value;
  }

  std::int64_t CheckedNumber(const ProfileField& field, const toml::node& node) const {
    if (!node.is_integer()) FailType(field, node);
    const std::int64_t number = node.as_integer()->get();
    if (!field.number.Hold(number)) {
      Fail(Line(node), "field '{}' is {}; right is {}", field.name, number, Wanted(field));
    }
    return number;
  }

  [[noreturn]] void FailType(const ProfileField& field, const toml::node& node) const {
    Fail(Line(node), "field '{}' has a value of another kind; right is {}", field.name,
         Wanted(field));
  }

  void RequireFields(const Draft& draft, toml::source_index device_line) const {
    for (std::size_t i = 0; i < draft.lines.size(); ++i) {
      const ProfileField& field = ProfileFields()[i];
      if (field.presence == ProfileField::Presence::kOptional || draft.lines[i] != 0) continue;
      Fail(device_line, "field '{}' is missing from this device and from [defaults]; right is {}",
           field.name, Wanted(field));
    }
  }

  void KeepRules(const Draft& draft, toml::source_index device_line) const {
    const ProfileRule* rule = FirstBrokenRule(draft.device);
    if (rule == nullptr) return;
    const auto line = draft.lines[FieldIndex(rule->field)];
    Fail(line != 0 ? line : device_line, "field '{}' of device '{}': {}", rule->field,
         draft.device.name, rule->text);
  }

  std::string_view text_;
  std::string_view file_;
};

}  // namespace

std::vector<DeviceProfile> ParseProfiles(std::string_view text, std::string_view file) {
  return Reader(text, file).Devices();
}

}  // namespace fliglaf
