// A form as a window of Windows.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/form.h"
#include "platform/win32/dialog_keys.h"
#include "platform/win32/message_font.h"
#include "platform/win32/scroll_pane.h"

namespace fliglaf::platform {

/// A modeless dialog without owner, with a control of Windows for each of the form. What the user
/// does goes to the form's handlers, and what these change is shown after each of them. It is never
/// larger than the screen: its buttons always stay in view, the rest scrolls.
class FormWindow final : public FormView {
 public:
  /// `form` and `font` outlive it. `hold` is let go when the window is gone, as the last thing.
  FormWindow(Form& form, const MessageFont& font, std::shared_ptr<void> hold);
  ~FormWindow() override;

  /// Shows the form as it is now, in front of other windows.
  void Show();
  void TakeOver() override;
  /// During an event: when that has been handled.
  void Close() override;

 private:
  /// What is shown of a control.
  struct Shown {
    std::u16string text;
    bool visible = false;
    bool enabled = true;
    RECT place = {};
    std::vector<std::u16string> entries;
    int chosen = -1;
    DWORD selection_start = 0;
    DWORD selection_end = 0;
  };
  struct Item {
    FormWindow* window;
    Control* control;
    HWND handle;
    WNDPROC before;  ///< of a text box or a list: what its messages went to
    Shown shown;
  };

  static INT_PTR CALLBACK OnDialogMessage(HWND dialog, UINT message, WPARAM wide, LPARAM lng);
  static LRESULT CALLBACK OnControlMessage(HWND handle, UINT message, WPARAM wide, LPARAM lng);
  LRESULT ControlMessage(Item& item, UINT message, WPARAM wide, LPARAM lng);
  LRESULT TextMessage(Item& item, UINT message, WPARAM wide, LPARAM lng);
  void OnCommand(int notification, HWND from);

  void CreateControls();
  [[nodiscard]] HWND CreateControl(const Control& control, int number);
  [[nodiscard]] int IdOf(const Control& control, int number) const;

  /// Takes over what the user has done, calls a handler and shows what it has changed. The window
  /// may be gone afterwards.
  void Event(const std::function<void()>& handler);
  /// Finds out what the user has made of the controls.
  void Observe();
  void Update();
  void Apply(Item& item, Shown now);
  /// Sizes the window to what is on it, within the screen.
  void Fit();
  void Place(SIZE client, const RECT& work);
  void BringIntoView(const Item& item);
  [[nodiscard]] std::vector<std::u16string> Captions() const;
  [[nodiscard]] Shown Wanted(const Control& control, const std::u16string& caption) const;
  [[nodiscard]] RECT PlaceOf(const Control& control) const;
  [[nodiscard]] SIZE WholeSize() const;
  /// From the top of the window to the end of what stands above the buttons.
  [[nodiscard]] LONG ContentHeight() const;
  [[nodiscard]] Item* ItemOf(HWND handle);
  void Finish();

  Form& form_;
  const MessageFont& font_;
  std::shared_ptr<void> hold_;
  HWND dialog_ = nullptr;
  std::optional<ScrollPane> pane_;  ///< holds all but the buttons
  SIZE buttons_moved_ = {};         ///< from their place on the form
  std::vector<std::unique_ptr<Item>> items_;
  std::optional<DialogKeys> keys_;
  int events_ = 0;
  bool placed_ = false;
  bool closing_ = false;
};

}  // namespace fliglaf::platform
