#include "platform/automation_string.h"

#include <windows.h>

#include <algorithm>
#include <limits>
#include <new>
#include <oleauto.h>

namespace fliglaf::platform {
namespace {

static_assert(sizeof(BSTR) == sizeof(AutomationString), "a block holds the BSTR itself");

BSTR Native(AutomationString string) { return reinterpret_cast<BSTR>(string); }

/// A BSTR of the two texts, one after the other.
AutomationString Join(std::u16string_view first, std::u16string_view second) {
  const std::size_t length = first.size() + second.size();
  if (length == 0) return 0;
  // The allocator counts bytes in 32 bits, so that a greater length would wrap to a short string.
  constexpr std::size_t kLongest = std::numeric_limits<std::int32_t>::max() / sizeof(OLECHAR);
  BSTR joined = length > kLongest ? nullptr : SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (joined == nullptr) throw std::bad_alloc();
  std::ranges::copy(second, std::ranges::copy(first, joined).out);
  return reinterpret_cast<AutomationString>(joined);
}

}  // namespace

AutomationString AllocateString(std::u16string_view text) { return Join(text, {}); }

void FreeString(AutomationString string) noexcept { SysFreeString(Native(string)); }

std::u16string_view StringText(AutomationString string) {
  if (string == 0) return {};
  return {reinterpret_cast<const char16_t*>(Native(string)), SysStringLen(Native(string))};
}

void AppendString(AutomationString& string, std::u16string_view text) {
  if (text.empty()) return;
  const AutomationString replaced = string;
  string = Join(StringText(replaced), text);
  FreeString(replaced);
}

}  // namespace fliglaf::platform
