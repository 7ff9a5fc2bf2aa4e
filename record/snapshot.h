// The shared variables at one moment, and the sections of a record that come from them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "shared/shared_variables.h"

namespace fliglaf::record {

class Snapshot {
 public:
  Snapshot() = default;
  explicit Snapshot(const SharedVariables& vars);

  /// Appends what is not 0 and not empty as assignments.
  void WriteContents(std::string& out) const;
  /// Appends what differs from `earlier`, and always the result, the log and the progress. The log
  /// is written as `log`.
  void WriteChanges(std::string& out, const Snapshot& earlier, std::u16string_view log) const;

 private:
  struct Variable {
    const SharedVariable* variable;
    std::vector<std::int32_t> numbers;
    std::vector<std::u16string> texts;
  };

  std::vector<Variable> variables_;
};

}  // namespace fliglaf::record
