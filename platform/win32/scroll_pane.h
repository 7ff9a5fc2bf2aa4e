// The part of a window that scrolls where the screen is too small for all that stands on it.
#pragma once

#include <windows.h>

namespace fliglaf::platform {

/// A child of a dialog, at its upper left. Its own children are part of the dialog: the Tab key goes
/// through them, and the dialog gets their notifications. Lengths are pixels of the screen.
class ScrollPane {
 public:
  /// `line`: how far an arrow of a scroll bar moves, and the margin around what ScrollTo shows. The
  /// pane is destroyed with the dialog.
  ScrollPane(HWND dialog, int line);
  ScrollPane(const ScrollPane&) = delete;
  ScrollPane& operator=(const ScrollPane&) = delete;

  [[nodiscard]] HWND handle() const { return handle_; }
  /// The size for a content, with the scroll bars that it needs if it may be no larger than `most`.
  [[nodiscard]] static SIZE SizeFor(SIZE content, SIZE most);
  void Resize(SIZE size, SIZE content);
  /// Whether a part of the content is out of view.
  [[nodiscard]] bool Scrolls() const;
  /// The point of the content that is at the upper left. Children have to be placed by it.
  [[nodiscard]] POINT origin() const { return origin_; }
  /// Brings a part of the content into view, its upper left at least.
  void ScrollTo(const RECT& part);

 private:
  static INT_PTR CALLBACK OnMessage(HWND handle, UINT message, WPARAM wide, LPARAM lng);
  [[nodiscard]] LONG Moved(int bar, int code) const;
  void Turn(WPARAM wheel, bool sideways);
  void MoveTo(POINT origin);

  HWND handle_;
  int line_;
  SIZE content_ = {};
  SIZE view_ = {};  ///< the pane without its scroll bars
  POINT origin_ = {};
};

}  // namespace fliglaf::platform
