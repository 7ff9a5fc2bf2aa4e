// Shared variables as a run record names them: `NAME(INDEX) = ITEM ITEM ...`.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "record/text.h"
#include "shared/shared_variables.h"

namespace fliglaf::record {

/// `count` equal elements.
struct EqualElements {
  std::int64_t count;
  std::int32_t value;
};

/// Consecutive elements of one variable.
struct Assignment {
  SharedVariable* variable = nullptr;
  std::int32_t index = 0;
  /// Elements from `index` on; of a variable of texts there are none but `text`.
  std::vector<EqualElements> runs;
  std::u16string text;
};

/// An element that does not hold what an assignment says.
struct Mismatch {
  std::int64_t index;
  std::string expected;
  std::string actual;
};

/// Calls `body` with the variable as what it is: a variable of bytes, of Integers, ...
template <class Body>
decltype(auto) Visit(SharedVariable& variable, const Body& body) {
  switch (variable.type()) {
    case ElementType::kByte:
      return body(static_cast<ByteVariable&>(variable));
    case ElementType::kBoolean:
      return body(static_cast<BooleanVariable&>(variable));
    case ElementType::kInteger:
      return body(static_cast<IntegerVariable&>(variable));
    case ElementType::kLong:
      return body(static_cast<LongVariable&>(variable));
    case ElementType::kString:
      break;
  }
  return body(static_cast<StringVariable&>(variable));
}

[[nodiscard]] inline bool IsText(const SharedVariable& variable) {
  return variable.type() == ElementType::kString;
}

/// Takes `NAME(INDEX)`. Throws TextError when no variable has that name; whether it has such an
/// element is found when it is used.
[[nodiscard]] std::pair<SharedVariable*, std::int32_t> TakeElement(Scanner& scanner,
                                                                   const SharedVariables& vars);

/// Takes the assignment that `scanner` stands before into `assignment`. Throws TextError for an
/// unknown name and for values that are none or do not fit the variable's type.
void TakeAssignment(Scanner& scanner, const SharedVariables& vars, Assignment& assignment);

/// Writes what it says. Throws TextError, before anything is written, when the variable does not
/// have all of these elements.
void Store(const Assignment& assignment);

/// The first element that differs from what `assignment` says. Throws TextError as Store does.
[[nodiscard]] std::optional<Mismatch> Compare(const Assignment& assignment);

/// The numbers as items of one line: `3 4*0 7`.
[[nodiscard]] std::string Items(std::span<const EqualElements> runs);

/// Neighbours that are equal, counted.
[[nodiscard]] std::vector<EqualElements> CountEqual(std::span<const std::int32_t> values);

/// Appends assignments of `values`, the elements of `name` from `index` on, in as many lines as
/// they need.
void WriteNumbers(std::string& out, std::string_view name, std::size_t index,
                  std::span<const std::int32_t> values);

/// So many elements that did not change end a line of changes.
inline constexpr std::size_t kUnchangedBetween = 8;

/// The same of the elements that `differs` is true for by their place in `values`, with what lies
/// between close ones.
template <class Differs>
void WriteWhere(std::string& out, std::string_view name, std::size_t index,
                std::span<const std::int32_t> values, const Differs& differs) {
  std::size_t first = 0;
  std::size_t end = 0;  // of the piece that is not written yet; `first` if nothing is left
  const auto write = [&] {
    if (end > first) WriteNumbers(out, name, index + first, values.subspan(first, end - first));
  };
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!differs(i)) continue;
    if (end == first || i - end >= kUnchangedBetween) {
      write();
      first = i;
    }
    end = i + 1;
  }
  write();
}

/// The byte of a shared variable that lies at `address`: variable and index; null when none does.
[[nodiscard]] std::pair<SharedVariable*, std::int32_t> FindByte(const SharedVariables& vars,
                                                                const std::uint8_t* address);

}  // namespace fliglaf::record
