#include "platform/win32/scroll_pane.h"

#include <algorithm>

#include "platform/win32/empty_dialog.h"

namespace fliglaf::platform {
namespace {

constexpr int kLinesOfANotch = 3;

/// What the scroll bars of a pane of that size leave of it. Either bar may make the other necessary.
SIZE ViewOf(SIZE content, SIZE size) {
  SIZE view = size;
  for (int pass = 0; pass < 2; ++pass) {
    if (content.cy > view.cy) view.cx = size.cx - GetSystemMetrics(SM_CXVSCROLL);
    if (content.cx > view.cx) view.cy = size.cy - GetSystemMetrics(SM_CYHSCROLL);
  }
  return view;
}

void SetBar(HWND pane, int bar, LONG content, LONG view) {
  SCROLLINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = SIF_RANGE | SIF_PAGE;
  info.nMax = content - 1;
  info.nPage = static_cast<UINT>(view);
  SetScrollInfo(pane, bar, &info, TRUE);
}

/// Where a view that begins at `origin` has to begin to show `from` to `to`.
LONG Showing(LONG origin, LONG view, LONG from, LONG to) {
  return std::min(std::max(origin, to - view), from);
}

}  // namespace

ScrollPane::ScrollPane(HWND dialog, int line)
    : handle_(CreateEmptyDialog(WS_CHILD | WS_VISIBLE | DS_CONTROL, WS_EX_CONTROLPARENT, dialog,
                                OnMessage)),
      line_(line) {
  SetWindowLongPtrW(handle_, DWLP_USER, reinterpret_cast<LONG_PTR>(this));
}

SIZE ScrollPane::SizeFor(SIZE content, SIZE most) {
  const SIZE view = ViewOf(content, most);
  return {std::min(content.cx + most.cx - view.cx, most.cx),
          std::min(content.cy + most.cy - view.cy, most.cy)};
}

void ScrollPane::Resize(SIZE size, SIZE content) {
  content_ = content;
  view_ = ViewOf(content, size);
  SetWindowPos(handle_, nullptr, 0, 0, size.cx, size.cy, SWP_NOZORDER | SWP_NOACTIVATE);
  SetBar(handle_, SB_HORZ, content.cx, view_.cx);
  SetBar(handle_, SB_VERT, content.cy, view_.cy);
  MoveTo(origin_);
}

bool ScrollPane::Scrolls() const { return content_.cx > view_.cx || content_.cy > view_.cy; }

void ScrollPane::ScrollTo(const RECT& part) {
  MoveTo({Showing(origin_.x, view_.cx, part.left - line_, part.right + line_),
          Showing(origin_.y, view_.cy, part.top - line_, part.bottom + line_)});
}

/// As far as there is content.
void ScrollPane::MoveTo(POINT origin) {
  origin.x = std::max(0L, std::min(origin.x, content_.cx - view_.cx));
  origin.y = std::max(0L, std::min(origin.y, content_.cy - view_.cy));
  ScrollWindowEx(handle_, origin_.x - origin.x, origin_.y - origin.y, nullptr, nullptr, nullptr,
                 nullptr, SW_SCROLLCHILDREN | SW_INVALIDATE | SW_ERASE);
  origin_ = origin;
  SetScrollPos(handle_, SB_HORZ, origin.x, TRUE);
  SetScrollPos(handle_, SB_VERT, origin.y, TRUE);
}

/// Where the user has scrolled to with a scroll bar.
LONG ScrollPane::Moved(int bar, int code) const {
  const LONG now = bar == SB_HORZ ? origin_.x : origin_.y;
  const LONG page = std::max<LONG>(line_, (bar == SB_HORZ ? view_.cx : view_.cy) - line_);
  SCROLLINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = SIF_TRACKPOS | SIF_RANGE;
  GetScrollInfo(handle_, bar, &info);
  switch (code) {
    case SB_LINEUP:
      return now - line_;
    case SB_LINEDOWN:
      return now + line_;
    case SB_PAGEUP:
      return now - page;
    case SB_PAGEDOWN:
      return now + page;
    case SB_THUMBPOSITION:
    case SB_THUMBTRACK:
      return info.nTrackPos;
    case SB_TOP:
      return 0;
    case SB_BOTTOM:
      return info.nMax;
    default:
      return now;
  }
}

/// Sideways, too, with Shift or where there is nothing above and below.
void ScrollPane::Turn(WPARAM wheel, bool sideways) {
  const LONG distance = MulDiv(GET_WHEEL_DELTA_WPARAM(wheel), kLinesOfANotch * line_, WHEEL_DELTA);
  const bool shift = (GET_KEYSTATE_WPARAM(wheel) & MK_SHIFT) != 0;
  if (sideways) {
    MoveTo({origin_.x + distance, origin_.y});
  } else if (shift || content_.cy <= view_.cy) {
    MoveTo({origin_.x - distance, origin_.y});
  } else {
    MoveTo({origin_.x, origin_.y - distance});
  }
}

INT_PTR CALLBACK ScrollPane::OnMessage(HWND handle, UINT message, WPARAM wide, LPARAM lng) {
  auto* const pane = reinterpret_cast<ScrollPane*>(GetWindowLongPtrW(handle, DWLP_USER));
  if (pane == nullptr) return FALSE;
  switch (message) {
    case WM_COMMAND:
      SendMessageW(GetParent(handle), message, wide, lng);
      return TRUE;
    case WM_HSCROLL:
      pane->MoveTo({pane->Moved(SB_HORZ, LOWORD(wide)), pane->origin_.y});
      return TRUE;
    case WM_VSCROLL:
      pane->MoveTo({pane->origin_.x, pane->Moved(SB_VERT, LOWORD(wide))});
      return TRUE;
    case WM_MOUSEWHEEL:
    case WM_MOUSEHWHEEL:
      pane->Turn(wide, message == WM_MOUSEHWHEEL);
      return TRUE;
    default:
      return FALSE;
  }
}

}  // namespace fliglaf::platform
