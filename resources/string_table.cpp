#include "resources/string_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>

namespace fliglaf::resources {
namespace {

constexpr std::size_t kBlocks = 8;

struct Row {
  int number;
  std::array<std::u16string_view, kBlocks> texts;  // one a language block, in their order
};

constexpr Row kRows[] = {
#define TEXT(number, english, chinese_simplified, chinese_traditional, korean, polish, italian,  \
             dutch)                                                                              \
  {number,                                                                                       \
   {u##english, u##chinese_simplified, u##chinese_traditional, u##korean, u##polish, u##english, \
    u##italian, u##dutch}},
#include "resources/texts.inc"
#undef TEXT
};
static_assert(std::ranges::adjacent_find(kRows, std::ranges::greater_equal{}, &Row::number) ==
                  std::end(kRows),
              "FindText searches by halves");
static_assert(std::ranges::all_of(kRows,
                                  [](const Row& row) {
                                    const int within = row.number < kOwnTexts
                                                           ? row.number
                                                           : row.number - kOwnTexts;
                                    return within >= 0 && within < kBlockSize;
                                  }),
              "a number stays within its block");

}  // namespace

std::u16string_view FindText(std::int64_t number) {
  const std::int64_t first = number < kOwnTexts ? 0 : kOwnTexts;
  const std::int64_t place = number - first;
  if (place < 0 || place / kBlockSize >= std::int64_t{kBlocks}) return {};
  const std::int64_t english = first + place % kBlockSize;
  const auto found = std::ranges::lower_bound(kRows, english, {}, &Row::number);
  if (found == std::end(kRows) || found->number != english) return {};
  return found->texts[static_cast<std::size_t>(place / kBlockSize)];
}

}  // namespace fliglaf::resources
