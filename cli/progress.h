#pragma once

#include <memory>
#include <ostream>
#include <string_view>

namespace fliglaf::cli {

enum class ProgressStyle { kAuto, kBar, kLines, kJson, kNone };

/// Shows how far a run has come.
class Progress {
 public:
  Progress() = default;
  virtual ~Progress() = default;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// `percent` of `operation`, as the library gives it: 0 to 100, back to 0 for a verify pass.
  /// Called often; what is shown already is not shown again.
  virtual void Update(std::string_view operation, int percent) = 0;
  /// The run has ended.
  virtual void Finish() {}
};

/// `terminal`: what kAuto goes by, a bar on a terminal, plain lines elsewhere.
[[nodiscard]] std::unique_ptr<Progress> MakeProgress(ProgressStyle style, bool terminal,
                                                     std::ostream& out);

}  // namespace fliglaf::cli
