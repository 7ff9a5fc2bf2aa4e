// A page of an editor: rows of a label and a control, in columns inside a frame.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/desktop.h"
#include "platform/form.h"

namespace fliglaf {

/// A label with the control that it names.
struct PageRow {
  /// The configuration byte that the control stands for bits of: "low", "lock", ...; empty for a
  /// row that stands for none.
  std::string_view byte;
  int first_bit = 0;
  int bits = 1;
  int column = 0;
  /// None for a bit without a name of its own.
  platform::Label* label = nullptr;
  platform::Control* control = nullptr;
  /// What the bits are for each entry of a list; unless given, the number of the entry.
  std::span<const std::uint8_t> values = {};
};

/// Adds a row for each bit of `byte` from `bit` on.
void AddBits(std::vector<PageRow>& rows, std::string_view byte, int column,
             std::span<platform::Label> labels, std::span<platform::ComboBox> combos, int bit = 0);

/// Gives every list the same entries, with one of them chosen.
void Fill(std::span<platform::ComboBox> lists, const std::vector<std::u16string>& entries,
          int chosen);
/// Chooses entry 0 or 1 by the bits of `byte` from `first` on.
void ShowBits(std::span<platform::ComboBox> lists, std::uint8_t byte, int first = 0);
/// The chosen entries as the bits of a byte from `first` on.
[[nodiscard]] std::uint8_t BitsOf(std::span<const platform::ComboBox> lists, int first = 0);

/// The sizes of controls, which follow from the text that they hold and the proportions that
/// Windows recommends.
class PageLayout {
 public:
  explicit PageLayout(platform::Desktop& desktop);

  /// Puts the visible rows of the frame into their columns, and gives it the size that they and its
  /// caption need. Labels and controls of a column are aligned, over all frames that `rows` has.
  void Arrange(platform::Frame& frame, std::span<const PageRow> rows) const;

  /// The size of both buttons.
  [[nodiscard]] platform::Size ButtonSize(const platform::Button& one,
                                          const platform::Button& other) const;

 private:
  struct Column {
    int labels;    ///< width
    int controls;  ///< width
  };

  [[nodiscard]] Column Measure(std::span<const PageRow> rows, int number) const;
  [[nodiscard]] int ControlWidth(const platform::Control& control) const;
  [[nodiscard]] int TextWidth(std::u16string_view text) const;
  /// Eighths of the height of a line of text.
  [[nodiscard]] int Eighths(int count) const { return line_ * count / 8; }

  platform::Desktop& desktop_;
  int line_;  ///< height of a line of text
};

}  // namespace fliglaf
