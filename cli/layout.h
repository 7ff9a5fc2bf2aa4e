// Texts and tables as wide as the terminal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/terminal.h"

namespace fliglaf::cli {

/// Columns that a line on the stream may take: what COLUMNS says, else the terminal's, else
/// 80.
[[nodiscard]] int ColumnsOf(platform::Stream stream);

/// Columns that the text takes: its characters.
[[nodiscard]] int Columns(std::string_view text);

/// `text` in lines of at most `width` columns, broken at blanks, each indented and with a line feed.
[[nodiscard]] std::string Wrapped(std::string_view text, int width, int indent = 0);

inline constexpr int kWidest = 1000;

using Row = std::vector<std::string>;

/// Rows of cells under each other. The last cell of a row continues below itself, or below the row
/// where the terminal is too narrow for that or the cells before it are wider than `widest`
/// columns.
[[nodiscard]] std::string Table(const std::vector<Row>& rows, int width, int indent = 0,
                                int widest = kWidest);

}  // namespace fliglaf::cli
