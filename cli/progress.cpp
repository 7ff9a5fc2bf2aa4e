#include "cli/progress.h"

#include <string>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace fliglaf::cli {
namespace {

/// Remembers what was shown last.
class Changes {
 public:
  /// True when operation or percent differ from the last time.
  bool Differs(std::string_view operation, int percent) {
    if (operation_ == operation && percent_ == percent) return false;
    operation_ = operation;
    percent_ = percent;
    return true;
  }

 private:
  std::string operation_;
  int percent_ = -1;
};

class Bar : public Progress {
 public:
  explicit Bar(std::ostream& out) : out_(out) {}

  void Update(std::string_view operation, int percent) override {
    if (!changes_.Differs(operation, percent)) return;
    constexpr int kWidth = 40;
    const int filled = percent * kWidth / 100;
    out_ << fmt::format("\r{:<14} [{:#<{}}{:{}}] {:3} %\033[K", operation, "", filled, "",
                        kWidth - filled, percent)
         << std::flush;
  }
  /// Takes the bar away: the log tells the rest.
  void Finish() override { out_ << "\r\033[K" << std::flush; }

 private:
  std::ostream& out_;
  Changes changes_;
};

/// One line where an operation begins and one for each quarter of it.
class Lines : public Progress {
 public:
  explicit Lines(std::ostream& out) : out_(out) {}

  void Update(std::string_view operation, int percent) override {
    constexpr int kStep = 25;
    const int shown = percent / kStep * kStep;
    if (changes_.Differs(operation, shown)) {
      out_ << fmt::format("{} {} %\n", operation, shown) << std::flush;
    }
  }

 private:
  std::ostream& out_;
  Changes changes_;
};

class JsonLines : public Progress {
 public:
  explicit JsonLines(std::ostream& out) : out_(out) {}

  void Update(std::string_view operation, int percent) override {
    if (!changes_.Differs(operation, percent)) return;
    const nlohmann::ordered_json line{{"operation", operation}, {"percent", percent}};
    out_ << line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
         << std::endl;
  }

 private:
  std::ostream& out_;
  Changes changes_;
};

class Silence : public Progress {
 public:
  void Update(std::string_view /*operation*/, int /*percent*/) override {}
};

}  // namespace

std::unique_ptr<Progress> MakeProgress(ProgressStyle style, bool terminal, std::ostream& out) {
  if (style == ProgressStyle::kAuto) style = terminal ? ProgressStyle::kBar : ProgressStyle::kLines;
  switch (style) {
    case ProgressStyle::kBar:
      return std::make_unique<Bar>(out);
    case ProgressStyle::kLines:
      return std::make_unique<Lines>(out);
    case ProgressStyle::kJson:
      return std::make_unique<JsonLines>(out);
    default:
      return std::make_unique<Silence>();
  }
}

}  // namespace fliglaf::cli
