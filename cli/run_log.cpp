#include "cli/run_log.h"

#include <charconv>
#include <ranges>
#include <vector>

#include "cli/host_session.h"

namespace fliglaf::cli {
namespace {

constexpr std::string_view kLineStart = ">>";

std::vector<std::string_view> LinesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  for (const auto& line : std::views::split(text, '\n'))
    lines.emplace_back(line.begin(), line.end());
  return lines;
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

constexpr std::size_t kAddressDigits = 8;

/// The number in front of an H, of so many digits.
std::optional<std::uint32_t> Number(std::string_view text, std::size_t digits) {
  std::uint32_t number = 0;
  if (text.size() <= digits || text[digits] != 'H') return std::nullopt;
  const auto [end, error] = std::from_chars(text.data(), text.data() + digits, number, 16);
  return error == std::errc{} && end == text.data() + digits ? std::optional(number) : std::nullopt;
}

/// ">> 000001A7H  02        000001A7H  03H"
bool IsDifference(std::string_view line) {
  constexpr std::string_view kStart = ">> ";
  return line.starts_with(kStart) && Number(line.substr(kStart.size()), kAddressDigits);
}

/// ">>Device Address:00000026H  Device Data:FDH  Buffer Address:00000026H  Buffer Data:FFH", the
/// words in the user's language; a blank check has the first two numbers only.
std::optional<Mismatch> MismatchIn(std::string_view line) {
  std::vector<std::uint32_t> numbers;
  while (numbers.size() < 4) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) break;
    line.remove_prefix(colon + 1);
    const auto number = Number(line, numbers.size() % 2 == 0 ? kAddressDigits : 2);
    if (!number) return std::nullopt;
    numbers.push_back(*number);
  }
  if (numbers.size() < 2) return std::nullopt;
  Mismatch mismatch{
      .address = numbers[0], .device = static_cast<std::uint8_t>(numbers[1]), .file = {}};
  if (numbers.size() == 4) mismatch.file = static_cast<std::uint8_t>(numbers[3]);
  return mismatch;
}

bool IsFailure(std::string_view line) {
  return line.starts_with(">>IoHelper.") || line.ends_with(" is missing") ||
         line == ">>Index out of range" || line == ">>Out of memory";
}

}  // namespace

RunLog ReadRunLog(std::string_view log) {
  RunLog run;
  for (const std::string_view line : LinesOf(log)) {
    if (const auto seconds = ElapsedSeconds(line)) {
      run.seconds = seconds;
    } else if (IsDifference(line)) {
      ++run.differences;
    } else if (IsFailure(line)) {
      run.failure = line.substr(kLineStart.size());
    } else if (!run.mismatch) {
      run.mismatch = MismatchIn(line);
    }
  }
  return run;
}

std::string_view CurrentOperation(std::string_view log) {
  std::string_view name;
  for (std::string_view line : LinesOf(log)) {
    if (!line.starts_with(kLineStart)) continue;
    line.remove_prefix(kLineStart.size());
    if (!line.starts_with(kNameStart) || !line.ends_with(kNameEnd)) continue;
    name = line.substr(kNameStart.size(), line.size() - kNameStart.size() - kNameEnd.size());
  }
  return name;
}

}  // namespace fliglaf::cli
