#include "replay/replay.h"

#include <algorithm>
#include <exception>
#include <fstream>

#include <fmt/format.h>

#include "replay/player.h"
#include "shared/utf8.h"

namespace fliglaf::record {
namespace {

/// Characters of a call or a value in a report: five lines of a terminal.
constexpr std::size_t kMostShown = 400;
/// Bytes ahead of where two long values begin to differ that are shown of both.
constexpr std::size_t kSameShown = 40;

/// Where to begin to show two values that differ.
std::size_t ShownFrom(std::string_view a, std::string_view b) {
  if (std::max(a.size(), b.size()) <= kMostShown) return 0;
  auto same = static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
  same -= std::min(same, kSameShown);
  while (same > 0 && (a[same] & 0xC0) == 0x80) --same;  // inside a character
  return same;
}

std::string Shown(std::string_view text, std::size_t from = 0) {
  return (from > 0 ? "..." : "") + Excerpt(text.substr(from), kMostShown);
}

void Explain(const Difference& difference, std::ostream& out) {
  for (const std::string& call : difference.calls_before) out << "    " << Shown(call) << '\n';
  if (!difference.element.empty()) out << "  in " << difference.element << '\n';
  out << fmt::format("  last line of the log {}, progress {} %\n", Shown(difference.last_log_line),
                     difference.progress);
}

int ReplayFile(const std::filesystem::path& file, const ReplayOptions& options, std::ostream& out,
               std::ostream& err) {
  const std::string name = file.string();
  const std::string shown_name = Printable(name);
  try {
    std::ifstream in(file, std::ios::binary);
    if (!in || std::filesystem::is_directory(file)) {
      err << shown_name << ": cannot be opened for reading\n";
      return kUnreadable;
    }
    const Verdict verdict = PlayRecord(in, name, {.keep_calls = options.explain});
    if (!verdict.difference) {
      out << fmt::format("{}: ok, {} calls\n", shown_name, verdict.calls);
      return kAllAgree;
    }
    const Difference& difference = *verdict.difference;
    const std::size_t from = ShownFrom(difference.expected, difference.actual);
    out << fmt::format("{}:{}: expected {}, got {}\n", shown_name, difference.line,
                       Shown(difference.expected, from), Shown(difference.actual, from));
    if (options.explain) Explain(difference, out);
    return kSomeDiffer;
  } catch (const RecordError& error) {
    err << Printable(error.what()) << '\n';
  } catch (const std::exception& error) {
    err << shown_name << ": " << Printable(error.what()) << '\n';
  }
  return kUnreadable;
}

}  // namespace

int Replay(std::span<const std::filesystem::path> files, const ReplayOptions& options,
           std::ostream& out, std::ostream& err) {
  int status = kAllAgree;
  for (const std::filesystem::path& file : files) {
    status = std::max(status, ReplayFile(file, options, out, err));
  }
  return status;
}

}  // namespace fliglaf::record
