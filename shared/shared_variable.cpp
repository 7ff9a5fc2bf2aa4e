#include "shared/shared_variable.h"

#include <algorithm>

namespace fliglaf {

bool SharedVariable::Open(const std::string& suffix) {
  return Open(suffix, row_.bytes, row_.elements);
}

bool SharedVariable::Open(const std::string& suffix, std::int32_t bytes, std::int32_t elements) {
  Detach();
  block_.UnMapFile();
  // Two rows expose more elements than their bytes hold; a block of ours has room for all.
  const std::int64_t needed = std::int64_t{elements} * width();
  const auto size = static_cast<std::int32_t>(std::max<std::int64_t>(bytes, needed));
  if (!block_.OpenAndMapMemoryBlock(std::string(row_.name) + suffix, size)) return false;
  Attach(block_.BaseAddress(), elements, block_.ViewSize());
  return true;
}

void SharedVariable::Release() {
  const bool attached = block_.BaseAddress() != nullptr;
  if (attached) Detach();
  block_.UnMapFile();
}

std::u16string_view StringVariable::operator[](std::int32_t index) const {
  return platform::StringText(array_[index]);
}

void StringVariable::Set(std::int32_t index, std::u16string_view text) {
  platform::AutomationString& element = array_[index];
  const platform::AutomationString replaced = element;
  element = platform::AllocateString(text);
  platform::FreeString(replaced);
}

void StringVariable::Append(std::int32_t index, std::u16string_view text) {
  platform::AppendString(array_[index], text);
}

void StringVariable::Attach(void* base, std::int32_t elements, std::size_t view_bytes) {
  FreePrivateElement();
  array_.AttachToArray(base, elements, view_bytes);
}

void StringVariable::Detach() {
  FreePrivateElement();
  array_.ReleaseArray();
}

void StringVariable::FreePrivateElement() {
  if (!array_.attached()) platform::FreeString(array_[0]);
}

}  // namespace fliglaf
