#include "record/snapshot.h"

#include <algorithm>
#include <array>
#include <span>
#include <type_traits>

#include <fmt/format.h>

#include "record/assignment.h"
#include "record/text.h"

namespace fliglaf::record {
namespace {

constexpr std::size_t kItemsOfALine = 32;
/// So many elements that did not change end a line of changes.
constexpr std::size_t kUnchangedBetween = 8;

/// What every record tells afterwards, changed or not.
struct Always {
  std::string_view name;
  std::size_t index;
};
constexpr std::array kAlways{Always{"quorinprgresult", 0}, Always{"quorinMainRtstr", 0},
                             Always{"quorinprgmode", 1}};
constexpr Always kLog = kAlways[1];

bool IsAlways(std::string_view name, std::size_t index) {
  return std::ranges::any_of(kAlways, [name, index](const Always& always) {
    return always.name == name && always.index == index;
  });
}

void WriteText(std::string& out, std::string_view name, std::size_t index,
               std::u16string_view text) {
  out += fmt::format("{}({}) = {}\n", name, index, Quote(text));
}

/// Writes elements from `index` on, in as many lines as they need.
void WriteNumbers(std::string& out, std::string_view name, std::size_t index,
                  std::span<const std::int32_t> values) {
  const std::vector<EqualElements> runs = CountEqual(values);
  for (std::size_t first = 0; first < runs.size(); first += kItemsOfALine) {
    const auto line = std::span(runs).subspan(first, std::min(kItemsOfALine, runs.size() - first));
    out += fmt::format("{}({}) = {}\n", name, index, Items(line));
    for (const EqualElements& run : line) index += static_cast<std::size_t>(run.count);
  }
}

/// Writes the elements that `differs` is true for, with what lies between close ones.
template <class Differs>
void WriteWhere(std::string& out, std::string_view name, const std::vector<std::int32_t>& values,
                const Differs& differs) {
  std::size_t first = 0;
  std::size_t last = 0;
  bool open = false;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!differs(i)) continue;
    if (open && i - last > kUnchangedBetween) {
      WriteNumbers(out, name, first, std::span(values).subspan(first, last + 1 - first));
      open = false;
    }
    if (!open) first = i;
    open = true;
    last = i;
  }
  if (open) WriteNumbers(out, name, first, std::span(values).subspan(first, last + 1 - first));
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
    WriteWhere(out, name, numbers, [&numbers](std::size_t i) { return numbers[i] != 0; });
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
    WriteWhere(out, name, now.numbers, [&now, &before, name](std::size_t i) {
      return i >= before.numbers.size() || now.numbers[i] != before.numbers[i] || IsAlways(name, i);
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
