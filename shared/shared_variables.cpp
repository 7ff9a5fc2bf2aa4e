#include "shared/shared_variables.h"

#include <algorithm>
#include <limits>
#include <string>

namespace fliglaf {
namespace {

constexpr std::size_t kDataBufferRows = 2;

/// What quorinibuffer has beyond the device data: room for the configuration bytes of any family.
constexpr std::int32_t kDataBufferMargin = 200;

}  // namespace

std::span<SharedVariable* const> SharedVariables::main_group() const {
  return table().first(table_.size() - kDataBufferRows);
}

void SharedVariables::OpenMainGroup(std::int16_t instance,
                                    const std::function<void()>& on_failure) {
  const std::string suffix = std::to_string(instance);
  for (SharedVariable* variable : main_group()) {
    if (!variable->Open(suffix)) on_failure();
  }
}

void SharedVariables::OpenDataBuffers(std::int32_t length,
                                      const std::function<void()>& on_failure) {
  if (!quorinibuffer.Open("", length, length)) on_failure();
  if (!quorinibuffer66.Open("")) on_failure();
}

std::int32_t SharedVariables::DataBufferLength() const {
  const std::int32_t length = quorinbuflength[0];
  constexpr std::int32_t kLongest = std::numeric_limits<std::int32_t>::max() - kDataBufferMargin;
  return std::min(length, kLongest) + kDataBufferMargin;
}

void SharedVariables::EmptyTexts() {
  for (SharedVariable* variable : table()) {
    if (variable->type() != ElementType::kString) continue;
    auto& texts = static_cast<StringVariable&>(*variable);
    for (std::int32_t i = 0; i < texts.count(); ++i) texts.Set(i, u"");
  }
}

void SharedVariables::ReleaseMainGroup() {
  for (SharedVariable* variable : main_group()) variable->Release();
}

void SharedVariables::ReleaseDataBuffers() {
  quorinibuffer.Release();
  quorinibuffer66.Release();
}

}  // namespace fliglaf
