#include "cli/run_log.h"

#include <algorithm>
#include <charconv>

#include "cli/host_session.h"

namespace fliglaf::cli {
namespace {

constexpr std::string_view kLineStart = ">>";

template <class Body>
void ForEachLine(std::string_view text, const Body& body) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    body(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

/// ">> 5.71Sec"
std::optional<double> ElapsedSeconds(std::string_view line) {
  constexpr std::string_view kStart = ">> ";
  constexpr std::string_view kEnd = "Sec";
  if (!line.starts_with(kStart) || !line.ends_with(kEnd)) return std::nullopt;
  line.remove_prefix(kStart.size());
  line.remove_suffix(kEnd.size());
  double seconds = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), seconds);
  if (error != std::errc{} || end != line.data() + line.size()) return std::nullopt;
  return seconds;
}

/// ">> 000001A7H  02        000001A7H  03H"
bool IsDifference(std::string_view line) {
  constexpr std::size_t kDigits = 8;
  if (!line.starts_with(">> ") || line.size() < 4 + kDigits || line[3 + kDigits] != 'H')
    return false;
  const auto address = line.substr(3, kDigits);
  return std::ranges::all_of(
      address, [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); });
}

bool IsFailure(std::string_view line) {
  return line.starts_with(">>IoHelper.") || line.ends_with(" is missing") ||
         line == ">>Index out of range" || line == ">>Out of memory";
}

}  // namespace

RunLog ReadRunLog(std::string_view log) {
  RunLog told;
  ForEachLine(log, [&told](std::string_view line) {
    if (const auto seconds = ElapsedSeconds(line)) {
      told.seconds = seconds;
    } else if (IsDifference(line)) {
      ++told.differences;
    } else if (IsFailure(line)) {
      told.failure = line.substr(kLineStart.size());
    }
  });
  return told;
}

std::string_view CurrentOperation(std::string_view log) {
  std::string_view name;
  ForEachLine(log, [&name](std::string_view line) {
    if (!line.starts_with(kLineStart)) return;
    line.remove_prefix(kLineStart.size());
    if (!line.starts_with(kNameStart) || !line.ends_with(kNameEnd)) return;
    name = line.substr(kNameStart.size(), line.size() - kNameStart.size() - kNameEnd.size());
  });
  return name;
}

}  // namespace fliglaf::cli
