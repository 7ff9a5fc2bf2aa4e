#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <string_view>

namespace fliglaf::cli {

enum class ProgressStyle { kAuto, kBar, kLines, kJson, kNone };

/// Shows how far a run has come.
class Progress {
 public:
  /// Percents are shown in multiples of `step`.
  explicit Progress(std::ostream& out, int step = 1) : out_(out), step_(step) {}
  virtual ~Progress() = default;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// `percent` of `operation`, as the library gives it: 0 to 100, back to 0 for a verify pass.
  /// Called often; what is shown already is not shown again.
  void Update(std::string_view operation, int percent);
  /// The run has ended.
  virtual void Finish() {}

 protected:
  virtual void Show(std::string_view operation, int percent) = 0;
  [[nodiscard]] std::ostream& out() { return out_; }

 private:
  std::ostream& out_;
  int step_;
  std::string operation_;  ///< shown last
  int percent_ = -1;
};

/// `terminal`: what kAuto goes by, a bar on a terminal, plain lines elsewhere.
[[nodiscard]] std::unique_ptr<Progress> MakeProgress(ProgressStyle style, bool terminal,
                                                     std::ostream& out);

}  // namespace fliglaf::cli
