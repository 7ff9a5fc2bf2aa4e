// Strings in shared blocks: a 4-byte reference to a UTF-16 text. On Windows the reference is a BSTR
// of the automation allocator; elsewhere it is a number in a table of the process, so that a block
// has the same layout in every build.
#pragma once

#include <cstdint>
#include <string_view>

namespace fliglaf::platform {

/// What a String element of a shared block holds; 0 is the empty string.
using AutomationString = std::uint32_t;

/// A new string; the caller owns it. The empty text gives 0.
[[nodiscard]] AutomationString AllocateString(std::u16string_view text);

/// Frees a string. Does nothing for 0 and for what is not a reference.
void FreeString(AutomationString string) noexcept;

/// The text, valid until the string is freed or appended to. Empty for 0 and for what is not a
/// reference.
[[nodiscard]] std::u16string_view StringText(AutomationString string);

/// Lengthens a string; what `string` held before is freed when the reference changes.
void AppendString(AutomationString& string, std::u16string_view text);

}  // namespace fliglaf::platform
