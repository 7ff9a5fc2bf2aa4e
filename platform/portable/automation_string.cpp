#include "platform/automation_string.h"

#include <memory>
#include <string>
#include <vector>

namespace fliglaf::platform {
namespace {

/// The strings of the process; reference n is entry n - 1. A freed entry is used again.
struct StringTable {
  std::vector<std::unique_ptr<std::u16string>> entries;
  std::vector<AutomationString> free;
};

StringTable& Table() {
  static StringTable table;
  return table;
}

std::u16string* Find(AutomationString string) {
  auto& entries = Table().entries;
  if (string == 0 || string > entries.size()) return nullptr;
  return entries[string - 1].get();
}

}  // namespace

AutomationString AllocateString(std::u16string_view text) {
  if (text.empty()) return 0;
  StringTable& table = Table();
  auto entry = std::make_unique<std::u16string>(text);
  if (table.free.empty()) {
    table.entries.push_back(std::move(entry));
    table.free.reserve(table.entries.capacity());  // so that freeing never allocates
    return static_cast<AutomationString>(table.entries.size());
  }
  const AutomationString string = table.free.back();
  table.free.pop_back();
  table.entries[string - 1] = std::move(entry);
  return string;
}

void FreeString(AutomationString string) noexcept {
  if (Find(string) == nullptr) return;
  Table().entries[string - 1].reset();
  Table().free.push_back(string);
}

std::u16string_view StringText(AutomationString string) {
  const std::u16string* text = Find(string);
  return text == nullptr ? std::u16string_view{} : *text;
}

void AppendString(AutomationString& string, std::u16string_view text) {
  if (std::u16string* existing = Find(string)) {
    existing->append(text);
  } else {
    string = AllocateString(text);
  }
}

}  // namespace fliglaf::platform
