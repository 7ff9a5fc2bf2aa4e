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
static_assert(kRows[0].number >= 0 && std::rbegin(kRows)->number < kBlockSize,
              "a number stays within its block");

}  // namespace

std::u16string_view FindText(std::int64_t number) {
  if (number < 0 || number / kBlockSize >= std::int64_t{kBlocks}) return {};
  const auto found = std::ranges::lower_bound(kRows, number % kBlockSize, {}, &Row::number);
  if (found == std::end(kRows) || found->number != number % kBlockSize) return {};
  return found->texts[static_cast<std::size_t>(number / kBlockSize)];
}

}  // namespace fliglaf::resources
