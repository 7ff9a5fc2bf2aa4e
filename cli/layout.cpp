#include "cli/layout.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <ranges>

#include <fmt/format.h>

namespace fliglaf::cli {
namespace {

constexpr int kGap = 2;  ///< between two cells
/// The least width of a last cell that stands beside the others.
constexpr int kLeastBeside = 24;

/// Without the blanks that it would end with.
std::string Line(std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  return line + "\n";
}

std::vector<int> Widths(const std::vector<Row>& rows, int widest) {
  std::vector<int> widths;
  for (const Row& row : rows) {
    for (std::size_t i = 0; i + 1 < row.size(); ++i) {
      if (widths.size() <= i) widths.push_back(0);
      if (Columns(row[i]) <= widest) widths[i] = std::max(widths[i], Columns(row[i]));
    }
  }
  return widths;
}

/// The cells before the last one.
std::string Start(const Row& row, const std::vector<int>& widths, int indent) {
  std::string line(static_cast<std::size_t>(indent), ' ');
  for (std::size_t i = 0; i + 1 < row.size(); ++i) {
    line += fmt::format("{:<{}}", row[i], widths[i]) + std::string(kGap, ' ');
  }
  return line;
}

}  // namespace

int ColumnsOf(platform::Stream stream) {
  constexpr int kElsewhere = 80;
  constexpr int kLeast = 20;
  if (const char* const set = std::getenv("COLUMNS"); set != nullptr) {
    const std::string_view digits = set;
    int columns = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), columns);
    if (error == std::errc{} && end == digits.end() && columns > 0)
      return std::max(columns, kLeast);
  }
  const int columns = platform::TerminalColumns(stream);
  return columns > 0 ? std::max(columns, kLeast) : kElsewhere;
}

int Columns(std::string_view text) {
  return static_cast<int>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string Wrapped(std::string_view text, int width, int indent) {
  const std::string margin(static_cast<std::size_t>(indent), ' ');
  std::string lines;
  std::string line = margin;
  for (const auto& part : std::views::split(text, ' ')) {
    const std::string_view word(part.begin(), part.end());
    const bool begins = line.size() == margin.size();
    if (!begins && Columns(line) + 1 + Columns(word) > width) {
      lines += line + "\n";
      line = margin;
    } else if (!begins) {
      line += ' ';
    }
    line += word;
  }
  return lines + Line(line);
}

std::string Table(const std::vector<Row>& rows, int width, int indent, int widest) {
  const std::vector<int> widths = Widths(rows, widest);
  int beside = indent;
  for (const int cell : widths) beside += cell + kGap;
  std::string table;
  for (const Row& row : rows) {
    const std::string start = Start(row, widths, indent);
    const bool fits = Columns(start) == beside &&
                      (width - beside >= kLeastBeside || beside + Columns(row.back()) <= width);
    if (row.back().empty()) {
      table += Line(start);
    } else if (fits) {
      table += start + Wrapped(row.back(), width, beside).substr(static_cast<std::size_t>(beside));
    } else {
      table += Line(start) + Wrapped(row.back(), width, std::min(beside, indent + 2 * kGap));
    }
  }
  return table;
}

}  // namespace fliglaf::cli
