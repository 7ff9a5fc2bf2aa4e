#include "record/replay.h"

#include <algorithm>
#include <exception>
#include <fstream>

#include <fmt/format.h>

#include "record/player.h"

namespace fliglaf::record {
namespace {

void Explain(const Difference& difference, std::ostream& out) {
  for (const std::string& call : difference.calls_before) out << "    " << call << '\n';
  if (!difference.element.empty()) out << "  in " << difference.element << '\n';
  out << fmt::format("  last line of the log {}, progress {} %\n", difference.last_log_line,
                     difference.progress);
}

int ReplayFile(const std::filesystem::path& file, const ReplayOptions& options, std::ostream& out,
               std::ostream& err) {
  const std::string name = file.string();
  try {
    std::ifstream in(file, std::ios::binary);
    if (!in || std::filesystem::is_directory(file)) {
      err << name << ": cannot be opened for reading\n";
      return kUnreadable;
    }
    const Verdict verdict = PlayRecord(in, name, {.keep_calls = options.explain});
    if (!verdict.difference) {
      out << fmt::format("{}: ok, {} calls\n", name, verdict.calls);
      return kAllAgree;
    }
    const Difference& difference = *verdict.difference;
    out << fmt::format("{}:{}: expected {}, got {}\n", name, difference.line, difference.expected,
                       difference.actual);
    if (options.explain) Explain(difference, out);
    return kSomeDiffer;
  } catch (const RecordError& error) {
    err << error.what() << '\n';
  } catch (const std::exception& error) {
    err << name << ": " << error.what() << '\n';
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
