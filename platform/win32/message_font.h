// The font of message boxes, which windows are written in.
#pragma once

#include <windows.h>

#include <string_view>

#include "platform/form.h"

namespace fliglaf::platform {

/// While it lives, windows are made for the resolution of the system as it was when the user logged
/// on, whatever the host is made for; Windows scales them where a screen differs.
class SystemResolution {
 public:
  SystemResolution();
  ~SystemResolution();
  SystemResolution(const SystemResolution&) = delete;
  SystemResolution& operator=(const SystemResolution&) = delete;

 private:
  void* before_ = nullptr;
};

class MessageFont {
 public:
  MessageFont();
  ~MessageFont() { DeleteObject(font_); }
  MessageFont(const MessageFont&) = delete;
  MessageFont& operator=(const MessageFont&) = delete;

  [[nodiscard]] HFONT get() const { return font_; }
  /// What a line of text takes, in twips.
  [[nodiscard]] Size TextSize(std::u16string_view text) const;
  /// Twips as pixels of the screen.
  [[nodiscard]] int Pixels(int twips) const { return MulDiv(twips, dots_per_inch_, 1440); }

 private:
  HFONT font_ = nullptr;
  int dots_per_inch_ = 96;
};

}  // namespace fliglaf::platform
