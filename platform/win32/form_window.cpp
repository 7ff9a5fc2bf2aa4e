#include "platform/win32/form_window.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "platform/access_keys.h"
#include "platform/win32/control_window.h"
#include "platform/win32/empty_dialog.h"
#include "platform/win32/module.h"
#include "platform/win32/system_error.h"
#include "platform/win32/visual_style.h"
#include "platform/win32/window_text.h"

namespace fliglaf::platform {
namespace {

constexpr DWORD kDialogStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME;
constexpr int kFirstId = 100;
constexpr int kListHeight = 200;  ///< more than an open list of three entries takes, in pixels
constexpr int kScrolledLine = 20 * kTwipsPerPixel;

const wchar_t* Native(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

/// The screen that the user works on, without the bars at its edges.
RECT WorkArea(HWND user_at) {
  MONITORINFO monitor = {};
  monitor.cbSize = sizeof monitor;
  GetMonitorInfoW(MonitorFromWindow(user_at, MONITOR_DEFAULTTOPRIMARY), &monitor);
  return monitor.rcWork;
}

/// What a window's frame and title bar add to its inside.
SIZE BorderOf(HWND dialog) {
  RECT border = {};
  AdjustWindowRectEx(&border, kDialogStyle, FALSE,
                     static_cast<DWORD>(GetWindowLongPtrW(dialog, GWL_EXSTYLE)));
  return {border.right - border.left, border.bottom - border.top};
}

bool operator==(const RECT& one, const RECT& other) { return EqualRect(&one, &other) != FALSE; }

}  // namespace

FormWindow::FormWindow(Form& form, const MessageFont& font, std::shared_ptr<void> hold)
    : form_(form), font_(font), hold_(std::move(hold)) {
  const SystemResolution resolution;
  const VisualStyle style;
  dialog_ = CreateEmptyDialog(kDialogStyle, 0, nullptr, OnDialogMessage);
  pane_.emplace(dialog_, font_.Pixels(kScrolledLine));
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
  if (IsButton(control)) {
    if (static_cast<const Button&>(control).is_default) return IDOK;
    if (static_cast<const Button&>(control).is_cancel) return IDCANCEL;
  }
  return kFirstId + number;
}

HWND FormWindow::CreateControl(const Control& control, int number) {
  const WindowKind kind = KindOf(control);
  const HWND handle = CreateWindowExW(
      kind.extended_style, kind.window_class, L"", WS_CHILD | kind.style, 0, 0, 0, 0,
      IsButton(control) ? dialog_ : pane_->handle(),
      reinterpret_cast<HMENU>(static_cast<INT_PTR>(IdOf(control, number))), ThisModule(), nullptr);
  if (handle == nullptr) ThrowLastError();
  SendMessageW(handle, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
  return handle;
}

void FormWindow::CreateControls() {
  for (Control* const control : form_.controls) {
    const HWND handle = CreateControl(*control, static_cast<int>(items_.size()));
    items_.push_back(std::make_unique<Item>(Item{this, control, handle, nullptr, {}}));
    const bool text = control->kind == Control::Kind::kTextBox;
    if (!text && control->kind != Control::Kind::kComboBox) continue;
    Item& item = *items_.back();
    if (text && static_cast<const TextBox&>(*control).longest > 0) {
      SendMessageW(handle, EM_LIMITTEXT, static_cast<const TextBox&>(*control).longest, 0);
    }
    SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&item));
    item.before = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(handle, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(OnControlMessage)));
  }
}

void FormWindow::Show() {
  const SystemResolution resolution;
  Observe();
  Fit();
  Update();
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
  if (IsButton(control)) OffsetRect(&wanted.place, buttons_moved_.cx, buttons_moved_.cy);
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
    const POINT origin = IsButton(*item.control) ? POINT{} : pane_->origin();
    SetWindowPos(handle, nullptr, now.place.left - origin.x, now.place.top - origin.y,
                 now.place.right - now.place.left, list ? kListHeight : height,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    if (list) SetClosedHeight(handle, height);
  }
  if (now.enabled != before.enabled) EnableWindow(handle, now.enabled);
  if (now.visible != before.visible) ShowWindow(handle, now.visible ? SW_SHOWNA : SW_HIDE);
  item.shown = std::move(now);
}

/// The inside of the form; larger where the margins at the right and below would otherwise be
/// narrower than those opposite.
SIZE FormWindow::WholeSize() const {
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

LONG FormWindow::ContentHeight() const {
  LONG height = 0;
  for (const Control* const control : form_.controls) {
    if (control->container != nullptr || !control->visible || IsButton(*control)) continue;
    height = std::max(height, PlaceOf(*control).bottom);
  }
  return height;
}

void FormWindow::Fit() {
  const RECT work = WorkArea(placed_ ? dialog_ : GetForegroundWindow());
  const SIZE border = BorderOf(dialog_);
  const SIZE whole = WholeSize();
  const SIZE content = {whole.cx, ContentHeight()};
  const LONG below = whole.cy - content.cy;
  const SIZE pane = ScrollPane::SizeFor(
      content, {work.right - work.left - border.cx, work.bottom - work.top - border.cy - below});
  buttons_moved_ = {pane.cx - whole.cx, pane.cy - content.cy};
  pane_->Resize(pane, content);
  Place({pane.cx + border.cx, pane.cy + below + border.cy}, work);
}

/// At first in the middle of the screen, and always within it.
void FormWindow::Place(SIZE outer, const RECT& work) {
  RECT now = {};
  GetWindowRect(dialog_, &now);
  LONG left = placed_ ? now.left : (work.left + work.right - outer.cx) / 2;
  LONG top = placed_ ? now.top : (work.top + work.bottom - outer.cy) / 2;
  left = std::max(work.left, std::min(left, work.right - outer.cx));
  top = std::max(work.top, std::min(top, work.bottom - outer.cy));
  SetWindowPos(dialog_, nullptr, left, top, outer.cx, outer.cy, SWP_NOZORDER | SWP_NOACTIVATE);
  placed_ = true;
}

/// With the label before it.
void FormWindow::BringIntoView(const Item& item) {
  RECT part = item.shown.place;
  const auto at = std::ranges::find(items_, &item, &std::unique_ptr<Item>::get);
  if (at != items_.begin() && (*(at - 1))->control->kind == Control::Kind::kLabel) {
    UnionRect(&part, &part, &(*(at - 1))->shown.place);
  }
  pane_->ScrollTo(part);
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
  const Control::Kind kind = item->control->kind;
  if (kind == Control::Kind::kButton && notification == BN_CLICKED) {
    Event([control = item->control] { static_cast<const Button&>(*control).Click(); });
  } else if (kind == Control::Kind::kComboBox && notification == CBN_SELCHANGE) {
    Event([control = item->control] {
      const auto& list = static_cast<const ComboBox&>(*control);
      if (list.on_click) list.on_click();
    });
  }
}

INT_PTR CALLBACK FormWindow::OnDialogMessage(HWND dialog, UINT message, WPARAM wide, LPARAM lng) {
  auto* const window = reinterpret_cast<FormWindow*>(GetWindowLongPtrW(dialog, DWLP_USER));
  if (window == nullptr) return FALSE;
  if (message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL) {  // over the buttons
    SendMessageW(window->pane_->handle(), message, wide, lng);
    return TRUE;
  }
  if (message != WM_COMMAND) return FALSE;
  // Enter, Esc and the closing box name their button by its number alone.
  HWND from = reinterpret_cast<HWND>(lng);  // NOLINT: how Windows passes it
  if (from == nullptr) from = GetDlgItem(dialog, LOWORD(wide));
  window->OnCommand(HIWORD(wide), from);
  return TRUE;
}

LRESULT CALLBACK FormWindow::OnControlMessage(HWND handle, UINT message, WPARAM wide, LPARAM lng) {
  auto* const item = reinterpret_cast<Item*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
  return item->window->ControlMessage(*item, message, wide, lng);
}

LRESULT FormWindow::ControlMessage(Item& item, UINT message, WPARAM wide, LPARAM lng) {
  const bool wheel = message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL;
  if (message == WM_SETFOCUS) BringIntoView(item);
  // Who scrolls the window must not change what is under the pointer, but an open list may scroll.
  if (wheel && pane_->Scrolls() && !SendMessageW(item.handle, CB_GETDROPPEDSTATE, 0, 0)) {
    return SendMessageW(pane_->handle(), message, wide, lng);
  }
  if (item.control->kind == Control::Kind::kTextBox) return TextMessage(item, message, wide, lng);
  return CallWindowProcW(item.before, item.handle, message, wide, lng);
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
