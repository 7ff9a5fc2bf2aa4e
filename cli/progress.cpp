#include "cli/progress.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/layout.h"

namespace fliglaf::cli {
namespace {

/// In one line less than `width`, since terminals go on to the next one after the last column; the
/// bar itself only where there is room for it.
std::string BarLine(std::string_view operation, int percent, int width) {
  constexpr int kLeastCells = 8;
  const std::string start = fmt::format("{:<14}", operation);
  const std::string end = fmt::format("{:3} %", percent);
  const int cells = width - 1 - Columns(start) - Columns(end) - 4;
  if (cells < kLeastCells) return start + " " + end;
  const int filled = percent * cells / 100;
  return fmt::format("{} [{:#<{}}{:{}}] {}", start, "", filled, "", cells - filled, end);
}

class Bar : public Progress {
 public:
  using Progress::Progress;

  void Show(std::string_view operation, int percent) override {
    Write(BarLine(operation, percent, ColumnsOf(platform::Stream::kError)));
  }
  /// Clears the bar, since the log follows.
  void Finish() override {
    Write("");
    Write("");
  }

 private:
  /// Blanks over the rest of what was there do without an escape sequence.
  void Write(const std::string& line) {
    const int rest = std::max(shown_ - Columns(line), 0);
    out() << fmt::format("\r{}{:{}}", line, "", rest) << std::flush;
    shown_ = Columns(line);
  }

  int shown_ = 0;  ///< columns
};

/// One line where an operation begins and one for each step of it.
class Lines : public Progress {
 public:
  using Progress::Progress;

  void Show(std::string_view operation, int percent) override {
    out() << fmt::format("{} {} %\n", operation, percent) << std::flush;
  }
};

class JsonLines : public Progress {
 public:
  using Progress::Progress;

  void Show(std::string_view operation, int percent) override {
    const nlohmann::ordered_json line{{"operation", operation}, {"percent", percent}};
    out() << line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
          << std::endl;
  }
};

/// A terminal that cannot go back to the beginning of a line.
bool IsDumb() {
  const char* const type = std::getenv("TERM");
  return type != nullptr && std::string_view(type) == "dumb";
}

class Silence : public Progress {
 public:
  using Progress::Progress;

  void Show(std::string_view /*operation*/, int /*percent*/) override {}
};

}  // namespace

void Progress::Update(std::string_view operation, int percent) {
  percent -= percent % step_;
  if (operation == operation_ && percent == percent_) return;
  operation_ = operation;
  percent_ = percent;
  Show(operation, percent);
}

std::unique_ptr<Progress> MakeProgress(ProgressStyle style, bool terminal, std::ostream& out) {
  if (style == ProgressStyle::kAuto) style = terminal ? ProgressStyle::kBar : ProgressStyle::kLines;
  if (style == ProgressStyle::kBar && IsDumb()) style = ProgressStyle::kLines;
  switch (style) {
    case ProgressStyle::kBar:
      return std::make_unique<Bar>(out);
    case ProgressStyle::kLines:
      return std::make_unique<Lines>(out, 25);
    case ProgressStyle::kJson:
      return std::make_unique<JsonLines>(out);
    default:
      return std::make_unique<Silence>(out);
  }
}

}  // namespace fliglaf::cli
