#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "devices/device_profile.h"

namespace fliglaf {

/// Both ends included.
struct Limits {
  std::int64_t least;
  std::int64_t most;

  [[nodiscard]] bool Hold(std::int64_t value) const { return value >= least && value <= most; }
};

/// A value of a profile file, checked against its field. A plain number is a list of one.
struct FieldValue {
  std::string text;
  std::vector<std::int64_t> numbers;
};

/// A field of a profile file, and where its value goes.
struct ProfileField {
  enum class Presence { kOptional, kRequired };
  enum class Shape { kText, kNumber, kList };

  std::string_view name;  ///< with its table, as "chip.erase_ms"
  Presence presence;
  Shape shape;
  Limits items;              ///< how many numbers a list has
  Limits number;             ///< each number
  std::string_view meaning;  ///< unit or use, for messages
  void (*store)(DeviceProfile&, const FieldValue&);
};

/// Every field there is; "name" is the first.
[[nodiscard]] std::span<const ProfileField> ProfileFields();

/// What a field must be, for messages: "a whole number from 1 to 16 (the device family)".
[[nodiscard]] std::string Wanted(const ProfileField& field);

}  // namespace fliglaf
