#include "record/snapshot.h"

#include <algorithm>
#include <array>
#include <type_traits>

#include <fmt/format.h>

#include "record/assignment.h"
#include "record/text.h"

namespace fliglaf::record {
namespace {

/// What every record tells afterwards, changed or not.
struct Always {
  std::string_view name;
  std::size_t index;
};
constexpr std::array kAlways{Always{"quorinprgresult", 0}, Always{"quorinMainRtstr", 0},
                             Always{"quorinprgmode", 1}};
constexpr Always kLog = kAlways[1];

/// The element of a variable that every record tells; -1 for most.
std::size_t AlwaysOf(std::string_view name) {
  const auto found = std::ranges::find(kAlways, name, &Always::name);
  return found == kAlways.end() ? static_cast<std::size_t>(-1) : found->index;
}

void WriteText(std::string& out, std::string_view name, std::size_t index,
               std::u16string_view text) {
  out += fmt::format("{}({}) = {}\n", name, index, Quote(text));
}

}  // namespace

Snapshot::Snapshot(const SharedVariables& vars) {
  for (SharedVariable* row : vars.table()) {
    Variable& copy = variables_.emplace_back(Variable{row, {}, {}});
    Visit(*row, [&copy](auto& variable) {
      for (std::int32_t i = 0; i < variable.count(); ++i) {
        if constexpr (std::is_same_v<std::remove_cvref_t<decltype(variable)>, StringVariable>) {
          copy.texts.emplace_back(variable[i]);
        } else {
          copy.numbers.push_back(variable[i]);
        }
      }
    });
  }
}

void Snapshot::WriteContents(std::string& out) const {
  for (const Variable& copy : variables_) {
    const std::string_view name = copy.variable->row().name;
    const std::vector<std::int32_t>& numbers = copy.numbers;
    WriteWhere(out, name, 0, numbers, [&numbers](std::size_t i) { return numbers[i] != 0; });
    for (std::size_t i = 0; i < copy.texts.size(); ++i) {
      if (!copy.texts[i].empty()) WriteText(out, name, i, copy.texts[i]);
    }
  }
}

void Snapshot::WriteChanges(std::string& out, const Snapshot& earlier,
                            std::u16string_view log) const {
  for (std::size_t v = 0; v < variables_.size(); ++v) {
    const Variable& now = variables_[v];
    const Variable& before = earlier.variables_[v];
    const std::string_view name = now.variable->row().name;
    const std::size_t always = AlwaysOf(name);
    WriteWhere(out, name, 0, now.numbers, [&now, &before, always](std::size_t i) {
      return i >= before.numbers.size() || now.numbers[i] != before.numbers[i] || i == always;
    });
    for (std::size_t i = 0; i < now.texts.size(); ++i) {
      const bool is_log = name == kLog.name && i == kLog.index;
      if (is_log || i >= before.texts.size() || now.texts[i] != before.texts[i]) {
        WriteText(out, name, i, is_log ? log : std::u16string_view(now.texts[i]));
      }
    }
  }
}

}  // namespace fliglaf::record
