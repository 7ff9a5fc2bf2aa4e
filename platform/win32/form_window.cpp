#include "platform/win32/form_window.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <utility>

#include "platform/access_keys.h"
#include "platform/win32/module.h"
#include "platform/win32/visual_style.h"
#include "platform/win32/window_text.h"

namespace fliglaf::platform {
namespace {

constexpr DWORD kDialogStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME;
constexpr int kFirstId = 100;
constexpr int kListHeight = 200;  ///< more than an open list of three entries takes, in pixels

const wchar_t* Native(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

[[noreturn]] void ThrowLastError(const char* what) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

/// An empty dialog: the controls are put on it afterwards.
struct EmptyDialog {
  DLGTEMPLATE dialog = {};
  WORD menu = 0;
  WORD window_class = 0;
  WORD title = 0;
};

struct WindowKind {
  const wchar_t* window_class;
  DWORD style;
  DWORD extended_style;
};

WindowKind KindOf(const Control& control) {
  switch (control.kind) {
    case Control::Kind::kLabel:
      return {L"STATIC", SS_LEFT, 0};
    case Control::Kind::kFrame:
      return {L"BUTTON", BS_GROUPBOX, 0};
    case Control::Kind::kButton: {
      const bool is_default = static_cast<const Button&>(control).is_default;
      const auto style = static_cast<DWORD>(is_default ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON);
      return {L"BUTTON", WS_TABSTOP | style, 0};
    }
    case Control::Kind::kTextBox: {
      const bool lines = static_cast<const TextBox&>(control).takes_return;
      DWORD style = WS_TABSTOP | ES_AUTOHSCROLL;
      if (lines) style |= ES_MULTILINE | ES_WANTRETURN | ES_AUTOVSCROLL;
      return {L"EDIT", style, WS_EX_CLIENTEDGE};
    }
    default:
      return {L"COMBOBOX", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, 0};
  }
}

/// Gives a closed list the height that it is to have.
void SetClosedHeight(HWND list, LONG height) {
  RECT now = {};
  GetWindowRect(list, &now);
  const auto item = static_cast<LONG>(SendMessageW(list, CB_GETITEMHEIGHT, WPARAM(-1), 0));
  SendMessageW(list, CB_SETITEMHEIGHT, WPARAM(-1), height - (now.bottom - now.top - item));
}

bool operator==(const RECT& one, const RECT& other) { return EqualRect(&one, &other) != FALSE; }

}  // namespace

FormWindow::FormWindow(Form& form, const MessageFont& font, std::shared_ptr<void> hold)
    : form_(form), font_(font), hold_(std::move(hold)) {
  const SystemResolution resolution;
  const VisualStyle style;
  EmptyDialog empty;
  empty.dialog.style = kDialogStyle;
  dialog_ = CreateDialogIndirectParamW(ThisModule(), &empty.dialog, nullptr, OnDialogMessage, 0);
  if (dialog_ == nullptr) ThrowLastError("the window of a form");
  SetWindowLongPtrW(dialog_, DWLP_USER, reinterpret_cast<LONG_PTR>(this));
  CreateControls();
  keys_.emplace(dialog_);
}

FormWindow::~FormWindow() {
  closing_ = true;
  keys_.reset();
  DestroyWindow(dialog_);
}

int FormWindow::IdOf(const Control& control, int number) const {
  if (control.kind == Control::Kind::kButton) {
    if (static_cast<const Button&>(control).is_default) return IDOK;
    if (static_cast<const Button&>(control).is_cancel) return IDCANCEL;
  }
  return kFirstId + number;
}

HWND FormWindow::CreateControl(const Control& control, int number) {
  const WindowKind kind = KindOf(control);
  const HWND handle = CreateWindowExW(
      kind.extended_style, kind.window_class, L"", WS_CHILD | kind.style, 0, 0, 0, 0, dialog_,
      reinterpret_cast<HMENU>(static_cast<INT_PTR>(IdOf(control, number))), ThisModule(), nullptr);
  if (handle == nullptr) ThrowLastError("a control");
  SendMessageW(handle, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
  return handle;
}

void FormWindow::CreateControls() {
  for (Control* const control : form_.controls) {
    const HWND handle = CreateControl(*control, static_cast<int>(items_.size()));
    items_.push_back(std::make_unique<Item>(Item{this, control, handle, nullptr, {}}));
    if (control->kind != Control::Kind::kTextBox) continue;
    Item& item = *items_.back();
    if (const auto& box = static_cast<const TextBox&>(*control); box.longest > 0) {
      SendMessageW(handle, EM_LIMITTEXT, box.longest, 0);
    }
    SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&item));
    item.before = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(handle, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(OnTextMessage)));
  }
}

void FormWindow::Show() {
  const SystemResolution resolution;
  Observe();
  Update();
  FitAndPlace();
  const bool first = !IsWindowVisible(dialog_);
  ShowWindow(dialog_, IsIconic(dialog_) ? SW_RESTORE : SW_SHOW);
  SetForegroundWindow(dialog_);
  if (!first) return;
  const HWND start = GetNextDlgTabItem(dialog_, nullptr, FALSE);
  SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(start), TRUE);
}

void FormWindow::Close() {
  if (events_ == 0) Finish();
}

/// Destroys the window, and with what held the library perhaps the library's objects.
void FormWindow::Finish() {
  const std::shared_ptr<void> hold = std::move(hold_);
  form_.view.reset();
}

void FormWindow::Event(const std::function<void()>& handler) {
  if (closing_) return;
  TakeOver();
  Item* const focused = ItemOf(GetFocus());
  Control* const before = focused == nullptr ? nullptr : focused->control;
  form_.focus = before;
  ++events_;
  try {
    handler();
  } catch (const std::exception&) {  // NOLINT: nothing passes through the frames of Windows
  }
  --events_;
  if (!form_.loaded) {
    if (events_ == 0) Finish();
    return;
  }
  Update();
  if (form_.focus == before) return;
  const auto wanted = std::ranges::find(items_, form_.focus, &Item::control);
  if (wanted == items_.end()) return;
  SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>((*wanted)->handle), TRUE);
}

void FormWindow::Observe() {
  for (const auto& item : items_) {
    Shown& shown = item->shown;
    if (item->control->kind == Control::Kind::kComboBox) {
      shown.chosen = static_cast<int>(SendMessageW(item->handle, CB_GETCURSEL, 0, 0));
    } else if (item->control->kind == Control::Kind::kTextBox) {
      shown.text = TextOf(item->handle);
      SendMessageW(item->handle, EM_GETSEL, reinterpret_cast<WPARAM>(&shown.selection_start),
                   reinterpret_cast<LPARAM>(&shown.selection_end));
    }
  }
}

void FormWindow::TakeOver() {
  Observe();
  for (const auto& item : items_) {
    const Shown& shown = item->shown;
    if (item->control->kind == Control::Kind::kComboBox) {
      static_cast<ComboBox&>(*item->control).chosen = shown.chosen;
    } else if (item->control->kind == Control::Kind::kTextBox) {
      auto& box = static_cast<TextBox&>(*item->control);
      box.text = shown.text;
      box.selection_start = shown.selection_start;
      box.selection_length = shown.selection_end - shown.selection_start;
    }
  }
}

void FormWindow::Update() {
  SetWindowTextW(dialog_, Native(form_.caption));
  const std::vector<std::u16string> captions = Captions();
  for (std::size_t i = 0; i < items_.size(); ++i) {
    Apply(*items_[i], Wanted(*items_[i]->control, captions[i]));
  }
}

/// The captions with access keys on the labels that can be seen.
std::vector<std::u16string> FormWindow::Captions() const {
  std::vector<std::u16string> captions(items_.size());
  std::vector<std::size_t> labels;
  std::vector<std::u16string_view> plain;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const Control& control = *items_[i]->control;
    if (control.kind == Control::Kind::kFrame) {
      captions[i] = WithoutAccessKey(static_cast<const Frame&>(control).caption);
    } else if (control.kind == Control::Kind::kButton) {
      captions[i] = WithoutAccessKey(static_cast<const Button&>(control).caption);
    } else if (control.kind == Control::Kind::kLabel) {
      const std::u16string& caption = static_cast<const Label&>(control).caption;
      captions[i] = WithoutAccessKey(caption);
      const bool seen =
          control.visible && (control.container == nullptr || control.container->visible);
      const bool names_one = i + 1 < items_.size() && items_[i + 1]->control->enabled;
      if (!seen || !names_one) continue;
      labels.push_back(i);
      plain.push_back(caption);
    }
  }
  const std::vector<std::u16string> with_keys = WithAccessKeys(plain);
  for (std::size_t i = 0; i < labels.size(); ++i) captions[labels[i]] = with_keys[i];
  return captions;
}

RECT FormWindow::PlaceOf(const Control& control) const {
  int left = control.left;
  int top = control.top;
  if (control.container != nullptr) {
    left += control.container->left;
    top += control.container->top;
  }
  const LONG x = font_.Pixels(left);
  const LONG y = font_.Pixels(top);
  return {x, y, x + font_.Pixels(control.width), y + font_.Pixels(control.height)};
}

FormWindow::Shown FormWindow::Wanted(const Control& control, const std::u16string& caption) const {
  Shown wanted;
  wanted.text = caption;
  wanted.visible = control.visible && (control.container == nullptr || control.container->visible);
  wanted.enabled = control.enabled;
  wanted.place = PlaceOf(control);
  if (control.kind == Control::Kind::kComboBox) {
    const auto& list = static_cast<const ComboBox&>(control);
    wanted.entries = list.entries;
    wanted.chosen = list.chosen;
  } else if (control.kind == Control::Kind::kTextBox) {
    const auto& box = static_cast<const TextBox&>(control);
    wanted.text = box.text;
    wanted.selection_start = static_cast<DWORD>(box.selection_start);
    wanted.selection_end = static_cast<DWORD>(box.selection_start + box.selection_length);
  }
  return wanted;
}

void FormWindow::Apply(Item& item, Shown now) {
  const HWND handle = item.handle;
  const Shown& before = item.shown;
  const bool list = item.control->kind == Control::Kind::kComboBox;
  const bool new_text = now.text != before.text;
  if (new_text && !list) SetWindowTextW(handle, Native(now.text));
  if (item.control->kind == Control::Kind::kTextBox &&
      (new_text || now.selection_start != before.selection_start ||
       now.selection_end != before.selection_end)) {
    SendMessageW(handle, EM_SETSEL, now.selection_start, static_cast<LPARAM>(now.selection_end));
  }
  const bool new_entries = now.entries != before.entries;
  if (new_entries) {
    SendMessageW(handle, CB_RESETCONTENT, 0, 0);
    for (const std::u16string& entry : now.entries) {
      SendMessageW(handle, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.c_str()));
    }
  }
  if (new_entries || now.chosen != before.chosen) {
    SendMessageW(handle, CB_SETCURSEL, static_cast<WPARAM>(now.chosen), 0);
  }
  if (!(now.place == before.place)) {
    const int height = now.place.bottom - now.place.top;
    SetWindowPos(handle, nullptr, now.place.left, now.place.top, now.place.right - now.place.left,
                 list ? kListHeight : height, SWP_NOZORDER | SWP_NOACTIVATE);
    if (list) SetClosedHeight(handle, height);
  }
  if (now.enabled != before.enabled) EnableWindow(handle, now.enabled);
  if (now.visible != before.visible) ShowWindow(handle, now.visible ? SW_SHOWNA : SW_HIDE);
  item.shown = std::move(now);
}

/// The inside of the form; larger where the margins at the right and below would otherwise be
/// narrower than those opposite.
SIZE FormWindow::ClientSize() const {
  const Size inner = form_.InnerSize();
  LONG left = inner.width;
  LONG top = inner.height;
  LONG right = 0;
  LONG bottom = 0;
  for (const Control* const control : form_.controls) {
    if (control->container != nullptr || !control->visible) continue;
    left = std::min<LONG>(left, control->left);
    top = std::min<LONG>(top, control->top);
    right = std::max<LONG>(right, control->left + control->width);
    bottom = std::max<LONG>(bottom, control->top + control->height);
  }
  return {font_.Pixels(static_cast<int>(std::max<LONG>(inner.width, right + left))),
          font_.Pixels(static_cast<int>(std::max<LONG>(inner.height, bottom + top)))};
}

/// Around what is on it; at first in the middle of the screen that the user works on, and always
/// within a screen.
void FormWindow::FitAndPlace() {
  const SIZE client = ClientSize();
  RECT outer = {0, 0, client.cx, client.cy};
  AdjustWindowRectEx(&outer, kDialogStyle, FALSE,
                     static_cast<DWORD>(GetWindowLongPtrW(dialog_, GWL_EXSTYLE)));
  const LONG width = outer.right - outer.left;
  const LONG height = outer.bottom - outer.top;

  const HWND user_at = placed_ ? dialog_ : GetForegroundWindow();
  MONITORINFO monitor = {};
  monitor.cbSize = sizeof monitor;
  GetMonitorInfoW(MonitorFromWindow(user_at, MONITOR_DEFAULTTOPRIMARY), &monitor);
  const RECT& work = monitor.rcWork;
  RECT now = {};
  GetWindowRect(dialog_, &now);
  LONG left = placed_ ? now.left : (work.left + work.right - width) / 2;
  LONG top = placed_ ? now.top : (work.top + work.bottom - height) / 2;
  left = std::max(work.left, std::min(left, work.right - width));
  top = std::max(work.top, std::min(top, work.bottom - height));
  SetWindowPos(dialog_, nullptr, left, top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
  placed_ = true;
}

FormWindow::Item* FormWindow::ItemOf(HWND handle) {
  for (const auto& item : items_) {
    if (item->handle == handle) return item.get();
  }
  return nullptr;
}

void FormWindow::OnCommand(int notification, HWND from) {
  const Item* const item = ItemOf(from);
  if (item == nullptr || !item->control->enabled) return;
  if (item->control->kind == Control::Kind::kButton && notification == BN_CLICKED) {
    Event([control = item->control] { static_cast<const Button&>(*control).Click(); });
  } else if (item->control->kind == Control::Kind::kComboBox && notification == CBN_SELCHANGE) {
    Event([control = item->control] {
      const auto& list = static_cast<const ComboBox&>(*control);
      if (list.on_click) list.on_click();
    });
  }
}

INT_PTR CALLBACK FormWindow::OnDialogMessage(HWND dialog, UINT message, WPARAM wide, LPARAM lng) {
  auto* const window = reinterpret_cast<FormWindow*>(GetWindowLongPtrW(dialog, DWLP_USER));
  if (window == nullptr || message != WM_COMMAND) return FALSE;
  // Enter, Esc and the closing box name their button by its number alone.
  HWND from = reinterpret_cast<HWND>(lng);  // NOLINT: how Windows passes it
  if (from == nullptr) from = GetDlgItem(dialog, LOWORD(wide));
  window->OnCommand(HIWORD(wide), from);
  return TRUE;
}

LRESULT CALLBACK FormWindow::OnTextMessage(HWND handle, UINT message, WPARAM wide, LPARAM lng) {
  auto* const item = reinterpret_cast<Item*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
  return item->window->TextMessage(*item, message, wide, lng);
}

LRESULT FormWindow::TextMessage(Item& item, UINT message, WPARAM wide, LPARAM lng) {
  const TextBox& box = static_cast<const TextBox&>(*item.control);
  const HWND handle = item.handle;
  const auto pass_on = [&, before = item.before] {
    return CallWindowProcW(before, handle, message, wide, lng);
  };
  switch (message) {
    case WM_GETDLGCODE: {
      // Tab and Esc are the dialog's; Enter is where it ends a line.
      const LRESULT code = pass_on() & ~LRESULT{DLGC_WANTALLKEYS};
      return box.takes_return && wide == VK_RETURN ? code | DLGC_WANTMESSAGE : code;
    }
    case WM_KEYDOWN: {
      int pressed = static_cast<int>(wide);
      if (box.on_key_down) Event([&] { box.on_key_down(pressed); });
      return pressed == 0 ? 0 : pass_on();
    }
    case WM_CHAR: {
      auto character = static_cast<char16_t>(wide);
      if (box.on_key_press) Event([&] { box.on_key_press(character); });
      wide = character;
      return character == 0 ? 0 : pass_on();
    }
    case WM_KEYUP: {
      const LRESULT result = pass_on();
      if (box.on_key_up) Event([&] { box.on_key_up(static_cast<int>(wide)); });
      return result;
    }
    case WM_KILLFOCUS: {
      const LRESULT result = pass_on();
      // Turning to another window does not count.
      const bool within = IsChild(dialog_, reinterpret_cast<HWND>(wide)) != FALSE;  // NOLINT
      if (within && box.on_lost_focus) Event([&] { box.on_lost_focus(); });
      return result;
    }
    default:
      return pass_on();
  }
}

}  // namespace fliglaf::platform
