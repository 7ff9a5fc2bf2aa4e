#include "simulator/judge.h"

#include "resources/string_table.h"
#include "shared/text.h"

namespace fliglaf::simulator {

std::u16string ComponentJudge::Text(int number) const {
  return std::u16string(resources::FindText(std::int64_t{vars().quorinLanguage[0]} + number));
}

std::u16string ComponentJudge::Hex(std::int32_t value, std::int32_t digits) const {
  return HexDigits(value, digits);
}

}  // namespace fliglaf::simulator
