#include "editors/page.h"

#include <algorithm>
#include <string>

namespace fliglaf {
namespace {

using platform::ComboBox;
using platform::Control;
using platform::kTwipsPerPixel;
using platform::Size;
using platform::TextBox;

// Eighths of a line of text.
constexpr int kControlHeight = 14;
constexpr int kGap = 4;  ///< between rows, and between a label and its control
constexpr int kColumnGap = 12;
constexpr int kMargin = 8;   ///< inside a frame
constexpr int kArrow = 18;   ///< the button of a list, and the borders
constexpr int kBorders = 6;  ///< of a text box
constexpr int kButtonWidth = 46;
constexpr int kButtonMargin = 8;

/// Characters that a text box without a limit shows.
constexpr std::size_t kShownCharacters = 8;

/// The next whole pixel of a plain screen.
int WholePixels(int twips) {
  return (twips + kTwipsPerPixel - 1) / kTwipsPerPixel * kTwipsPerPixel;
}

int Columns(std::span<const PageRow> rows) {
  int count = 0;
  for (const PageRow& row : rows) count = std::max(count, row.column + 1);
  return count;
}

}  // namespace

void Fill(std::span<ComboBox> lists, const std::vector<std::u16string>& entries, int chosen) {
  for (ComboBox& list : lists) {
    list.entries = entries;
    list.chosen = chosen;
  }
}

void ShowBits(std::span<ComboBox> lists, std::uint8_t byte, int first) {
  for (ComboBox& list : lists) list.chosen = byte >> first++ & 1;
}

std::uint8_t BitsOf(std::span<const ComboBox> lists, int first) {
  int byte = 0;
  for (const ComboBox& list : lists) byte |= list.chosen << first++;
  return static_cast<std::uint8_t>(byte);
}

PageLayout::PageLayout(platform::Desktop& desktop)
    : desktop_(desktop), line_(desktop.TextSize(u"X").height) {}

int PageLayout::TextWidth(std::u16string_view text) const {
  return desktop_.TextSize(text).width + 2 * kTwipsPerPixel;
}

int PageLayout::ControlWidth(const Control& control) const {
  if (control.kind == Control::Kind::kTextBox) {
    const auto& box = static_cast<const TextBox&>(control);
    const std::u16string widest(box.longest == 0 ? kShownCharacters : box.longest, u'D');
    return TextWidth(widest) + Eighths(kBorders);
  }
  int width = 0;
  for (const std::u16string& entry : static_cast<const ComboBox&>(control).entries) {
    width = std::max(width, TextWidth(entry));
  }
  return width + Eighths(kArrow);
}

PageLayout::Column PageLayout::Measure(std::span<const PageRow> rows, int number) const {
  Column column{};
  for (const PageRow& row : rows) {
    if (row.column != number || !row.control->visible) continue;
    if (row.label != nullptr) {
      column.labels = std::max(column.labels, TextWidth(row.label->caption));
    }
    column.controls = std::max(column.controls, ControlWidth(*row.control));
  }
  return column;
}

void PageLayout::Arrange(platform::Frame& frame, std::span<const PageRow> rows) const {
  int left = Eighths(kMargin);
  int lowest = 0;
  for (int number = 0; number < Columns(rows); ++number) {
    const Column column = Measure(rows, number);
    if (column.controls == 0) continue;
    if (left > Eighths(kMargin)) left += Eighths(kColumnGap);
    const int control_left = left + column.labels + Eighths(kGap);
    int top = line_ + Eighths(kMargin);  // below the caption
    std::string_view byte;
    for (const PageRow& row : rows) {
      const Control& control = *row.control;
      if (row.column != number || control.container != &frame || !control.visible) continue;
      if (!byte.empty() && !row.byte.empty() && row.byte != byte) top += Eighths(kGap);
      byte = row.byte;
      if (row.label != nullptr) {
        row.label->Move(left, top + Eighths(kControlHeight - 8) / 2, {column.labels, line_});
      }
      const bool list = row.control->kind == Control::Kind::kComboBox;
      row.control->Move(
          control_left, top,
          {list ? column.controls : ControlWidth(*row.control), Eighths(kControlHeight)});
      lowest = std::max(lowest, top + Eighths(kControlHeight));
      top += Eighths(kControlHeight + kGap);
    }
    left = control_left + column.controls;
  }
  frame.width =
      WholePixels(std::max(left, TextWidth(frame.caption) + Eighths(kMargin)) + Eighths(kMargin));
  frame.height = WholePixels(lowest + Eighths(kMargin));
}

Size PageLayout::ButtonSize(const platform::Button& one, const platform::Button& other) const {
  const int text = std::max(TextWidth(one.caption), TextWidth(other.caption));
  return {WholePixels(std::max(Eighths(kButtonWidth), text + 2 * Eighths(kButtonMargin))),
          WholePixels(Eighths(kControlHeight))};
}

void AddBits(std::vector<PageRow>& rows, std::string_view byte, int column,
             std::span<platform::Label> labels, std::span<platform::ComboBox> combos, int bit) {
  for (std::size_t i = 0; i < labels.size(); ++i) {
    rows.push_back({byte, bit++, 1, column, &labels[i], &combos[i]});
  }
}

}  // namespace fliglaf
