// Prints the shared blocks as a Markdown table.
#include <cstdio>
#include <string>

#include "shared/shared_variables.h"

namespace {

const char* NameOf(fliglaf::ElementType type) {
  using enum fliglaf::ElementType;
  switch (type) {
    case kByte:
      return "Byte";
    case kBoolean:
      return "Boolean";
    case kInteger:
      return "Integer";
    case kLong:
      return "Long";
    default:
      return "String";
  }
}

}  // namespace

int main() {
  const fliglaf::SharedVariables variables;
  std::puts("| # | Block | Type | Elements | Bytes | Use, by element |");
  std::puts("|---|---|---|---|---|---|");
  int number = 0;
  for (const fliglaf::SharedVariable* variable : variables.table()) {
    const fliglaf::VariableRow& row = variable->row();
    const auto count = [&row](std::int32_t value) {
      return row.elements == 0 ? std::string("L + 200") : std::to_string(value);
    };
    std::printf("| %d | `%s` | %s | %s | %s | %s |\n", ++number, std::string(row.name).c_str(),
                NameOf(variable->type()), count(row.elements).c_str(), count(row.bytes).c_str(),
                std::string(row.meaning).c_str());
  }
}
