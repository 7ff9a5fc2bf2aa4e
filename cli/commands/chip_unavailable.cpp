// Where the program is a client of the library through COM, the simulated chip is behind the
// library's programmer, out of reach for "fliglaf chip".
#include "cli/commands/table.h"

namespace fliglaf::cli {

std::unique_ptr<Command> MakeChip() { return nullptr; }

}  // namespace fliglaf::cli
