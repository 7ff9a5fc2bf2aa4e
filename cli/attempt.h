#pragma once

#include <string>
#include <vector>

#include "images/whole_file.h"
#include "platform/terminal.h"

namespace fliglaf::cli {

/// Writes something after a run, and adds to `problems` why it could not be written: what the
/// device now holds has to be reported all the same, and the other files be written.
template <class Write>
void Attempt(std::vector<std::string>& problems, const Write& write) {
  try {
    write();
  } catch (const ImageError& error) {
    problems.emplace_back(error.what());
  } catch (const platform::Stopped&) {
    problems.emplace_back("stopped while a file waited for its reader; it is not written");
  }
}

}  // namespace fliglaf::cli
