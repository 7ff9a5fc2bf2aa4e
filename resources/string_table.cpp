#include "resources/string_table.h"

#include <algorithm>
#include <iterator>

namespace fliglaf::resources {
namespace {

struct Row {
  int number;
  std::u16string_view english;
};

constexpr Row kRows[] = {
#define TEXT(number, english) {number, u##english},
#include "resources/texts.inc"
#undef TEXT
};
static_assert(std::ranges::is_sorted(kRows, {}, &Row::number), "FindText searches by halves");

}  // namespace

std::u16string_view FindText(std::int64_t number) {
  const std::int64_t in_block =
      number >= kEnglishSecondCopy ? number - kEnglishSecondCopy : number - kEnglish;
  const auto found = std::ranges::lower_bound(kRows, in_block, {}, &Row::number);
  if (found == std::end(kRows) || found->number != in_block) return {};
  return found->english;
}

}  // namespace fliglaf::resources
