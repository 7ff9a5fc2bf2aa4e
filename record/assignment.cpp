#include "record/assignment.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <limits>
#include <tuple>
#include <type_traits>

#include <fmt/format.h>

#include "shared/utf8.h"

namespace fliglaf::record {
namespace {

struct Limits {
  std::int64_t least;
  std::int64_t most;
};

template <class T>
constexpr Limits LimitsOf() {
  return {std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};
}

Limits ValueLimits(ElementType type) {
  switch (type) {
    case ElementType::kByte:
      return LimitsOf<std::uint8_t>();
    case ElementType::kBoolean:
    case ElementType::kInteger:
      return LimitsOf<std::int16_t>();
    default:
      return LimitsOf<std::int32_t>();
  }
}

constexpr std::size_t kItemsOfALine = 32;
constexpr std::int64_t kMostElements = std::numeric_limits<std::int32_t>::max();

/// Takes `N*VALUE` or `VALUE`.
EqualElements TakeItem(Scanner& scanner, const SharedVariable& variable) {
  const Limits limits = ValueLimits(variable.type());
  const std::int64_t first = scanner.Integer();
  const bool counted = scanner.Take('*');
  if (counted && (first < 1 || first > kMostElements)) {
    throw TextError(fmt::format("{} elements; must be 1 to {}", first, kMostElements));
  }
  const std::int64_t value = counted ? scanner.Integer() : first;
  if (value < limits.least || value > limits.most) {
    throw TextError(fmt::format("an element of {} cannot be {}; must be {} to {}",
                                variable.row().name, value, limits.least, limits.most));
  }
  return {counted ? first : 1, static_cast<std::int32_t>(value)};
}

std::int64_t ElementCount(const Assignment& assignment) {
  if (IsText(*assignment.variable)) return 1;
  std::int64_t count = 0;
  for (const EqualElements& run : assignment.runs) count += run.count;
  return count;
}

void CheckElements(const Assignment& assignment) {
  const std::int64_t last = assignment.index + ElementCount(assignment) - 1;
  const std::int32_t count = assignment.variable->count();
  if (last < count) return;
  throw TextError(fmt::format("there is no {0}({1}): {0} has {2} elements, 0 to {3}",
                              assignment.variable->row().name, last, count, count - 1));
}

template <class Variable>
constexpr bool kIsText = std::is_same_v<std::remove_cvref_t<Variable>, StringVariable>;

}  // namespace

std::pair<SharedVariable*, std::int32_t> TakeElement(Scanner& scanner,
                                                     const SharedVariables& vars) {
  const std::string_view name = scanner.Word();
  SharedVariable* found = nullptr;
  for (SharedVariable* variable : vars.table()) {
    if (variable->row().name == name) found = variable;
  }
  if (found == nullptr) {
    throw TextError(fmt::format("no shared variable is called \"{}\"", Excerpt(name)));
  }
  scanner.Expect('(');
  const auto index = static_cast<std::int32_t>(scanner.Integer(0, kMostElements, "index"));
  scanner.Expect(')');
  return {found, index};
}

void TakeAssignment(Scanner& scanner, const SharedVariables& vars, Assignment& assignment) {
  std::tie(assignment.variable, assignment.index) = TakeElement(scanner, vars);
  scanner.Expect('=');
  assignment.runs.clear();
  assignment.text.clear();
  if (IsText(*assignment.variable)) {
    assignment.text = scanner.QuotedText();
    return scanner.ExpectEnd();
  }
  do {
    assignment.runs.push_back(TakeItem(scanner, *assignment.variable));
  } while (!scanner.AtEnd());
}

void Store(const Assignment& assignment) {
  CheckElements(assignment);
  Visit(*assignment.variable, [&assignment](auto& variable) {
    if constexpr (kIsText<decltype(variable)>) {
      variable.Set(assignment.index, assignment.text);
    } else {
      auto* element = &variable[assignment.index];
      for (const EqualElements& run : assignment.runs) {
        using Element = std::remove_cvref_t<decltype(*element)>;
        element = std::fill_n(element, run.count, static_cast<Element>(run.value));
      }
    }
  });
}

std::optional<Mismatch> Compare(const Assignment& assignment) {
  CheckElements(assignment);
  return Visit(*assignment.variable, [&assignment](auto& variable) -> std::optional<Mismatch> {
    if constexpr (kIsText<decltype(variable)>) {
      const std::u16string_view actual = variable[assignment.index];
      if (actual == assignment.text) return std::nullopt;
      return Mismatch{assignment.index, Quote(assignment.text), Quote(actual)};
    } else {
      std::int64_t index = assignment.index;
      for (const EqualElements& run : assignment.runs) {
        for (const std::int64_t end = index + run.count; index < end; ++index) {
          if (variable[index] == run.value) continue;
          return Mismatch{index, std::to_string(run.value), std::to_string(variable[index])};
        }
      }
      return std::nullopt;
    }
  });
}

std::string Items(std::span<const EqualElements> runs) {
  std::string items;
  for (const EqualElements& run : runs) {
    if (!items.empty()) items += ' ';
    if (run.count > 1) fmt::format_to(std::back_inserter(items), "{}*", run.count);
    fmt::format_to(std::back_inserter(items), "{}", run.value);
  }
  return items;
}

std::vector<EqualElements> CountEqual(std::span<const std::int32_t> values) {
  std::vector<EqualElements> runs;
  for (const std::int32_t value : values) {
    if (!runs.empty() && runs.back().value == value) {
      ++runs.back().count;
    } else {
      runs.push_back({1, value});
    }
  }
  return runs;
}

void WriteNumbers(std::string& out, std::string_view name, std::size_t index,
                  std::span<const std::int32_t> values) {
  const std::vector<EqualElements> runs = CountEqual(values);
  for (std::size_t first = 0; first < runs.size(); first += kItemsOfALine) {
    const auto line = std::span(runs).subspan(first, std::min(kItemsOfALine, runs.size() - first));
    out += fmt::format("{}({}) = {}\n", name, index, Items(line));
    for (const EqualElements& run : line) index += static_cast<std::size_t>(run.count);
  }
}

std::pair<SharedVariable*, std::int32_t> FindByte(const SharedVariables& vars,
                                                  const std::uint8_t* address) {
  const std::less<> before;
  for (SharedVariable* variable : vars.table()) {
    if (variable->type() != ElementType::kByte || variable->count() == 0) continue;
    const std::uint8_t* first = &static_cast<ByteVariable&>(*variable)[0];
    if (!before(address, first) && before(address, first + variable->count())) {
      return {variable, static_cast<std::int32_t>(address - first)};
    }
  }
  return {nullptr, 0};
}

}  // namespace fliglaf::record
