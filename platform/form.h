// The control model that the library's windows are written against. A form is never drawn by the
// code that owns it: on Windows the platform shows it as a real window, elsewhere it stays in
// memory, where a test or the command line reads and drives it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace fliglaf::platform {

// Lengths are in twips, of which an inch has 1440.

/// A pixel of a screen with 96 dots per inch.
inline constexpr int kTwipsPerPixel = 15;

struct Size {
  int width = 0;
  int height = 0;
};

/// Codes of the keys that handlers look at.
namespace key {
inline constexpr int kBackspace = 8;
inline constexpr int kReturn = 13;
inline constexpr int kDelete = 46;
}  // namespace key

struct Frame;

/// What all controls have. Only a frame holds others.
struct Control {
  enum class Kind : std::uint8_t { kLabel, kFrame, kButton, kTextBox, kComboBox };

  explicit Control(Kind its_kind) : kind(its_kind) {}
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  void Move(int to_left, int to_top, Size size) {
    left = to_left;
    top = to_top;
    width = size.width;
    height = size.height;
  }

  const Kind kind;
  /// The frame that it stands in, or none.
  const Frame* container = nullptr;
  bool visible = true;
  bool enabled = true;
  int left = 0;  ///< within the frame or the window
  int top = 0;
  int width = 0;
  int height = 0;

 protected:
  ~Control() = default;
};

struct Label : Control {
  Label() : Control(Kind::kLabel) {}

  std::u16string caption;
};

struct Frame : Control {
  Frame() : Control(Kind::kFrame) {}

  std::u16string caption;
};

struct Button : Control {
  Button() : Control(Kind::kButton) {}

  std::u16string caption;
  bool is_default = false;  ///< Enter clicks it, wherever the focus is
  bool is_cancel = false;   ///< Esc does
  std::function<void()> on_click;

  void Click() const {
    if (enabled && on_click) on_click();
  }
};

/// A list of which one entry is chosen.
struct ComboBox : Control {
  ComboBox() : Control(Kind::kComboBox) {}

  std::vector<std::u16string> entries;
  int chosen = -1;  ///< index of the entry; -1 is none
  std::function<void()> on_click;

  /// Chooses an entry as the user does.
  void Choose(int entry) {
    chosen = entry;
    if (on_click) on_click();
  }
};

/// A line of text that can be typed over. The handlers of keys run before the box takes a key.
struct TextBox : Control {
  TextBox() : Control(Kind::kTextBox) {}

  std::u16string text;
  std::size_t longest = 0;    ///< characters that typing may make of it; 0 is without a limit
  bool takes_return = false;  ///< Enter types a line end, "\r\n"
  std::size_t selection_start = 0;
  std::size_t selection_length = 0;  ///< what the next character replaces

  /// Setting the key to 0 discards it.
  std::function<void(int& key)> on_key_down;
  /// Setting the character to 0 discards it.
  std::function<void(char16_t& character)> on_key_press;
  std::function<void(int key)> on_key_up;
  std::function<void()> on_lost_focus;

  /// Types a character, '\b' and '\r' included, as the user does.
  void Type(char16_t character);
  /// Presses the Delete key.
  void PressDelete();

 private:
  [[nodiscard]] bool KeyIsTaken(int pressed) const;
  void Replace(std::size_t start, std::size_t length, std::u16string_view by);
};

/// What shows a form to the user.
class FormView {
 public:
  FormView() = default;
  virtual ~FormView() = default;
  FormView(const FormView&) = delete;
  FormView& operator=(const FormView&) = delete;

  /// Puts into the form what the user has entered.
  virtual void TakeOver() = 0;
  /// The form has been unloaded. May destroy the view.
  virtual void Close() = 0;
};

struct Form {
  /// How much of a window's size its frame and title bar take.
  static constexpr Size kBorder = {6 * kTwipsPerPixel, 25 * kTwipsPerPixel};

  std::u16string caption;
  /// In the order in which the Tab key visits them: a frame before what stands in it, a label
  /// before the control that it names.
  std::vector<Control*> controls;
  /// Outer size; what is left inside the border is InnerSize().
  Size size;
  /// The control that has the focus, once the form has been shown or SetFocus called.
  Control* focus = nullptr;
  bool loaded = false;
  /// None for a form in memory.
  std::unique_ptr<FormView> view;

  [[nodiscard]] Size InnerSize() const {
    return {size.width - kBorder.width, size.height - kBorder.height};
  }

  /// Moves the focus; a text box that had it gets on_lost_focus.
  void SetFocus(Control& control);
  void Unload();
};

}  // namespace fliglaf::platform
