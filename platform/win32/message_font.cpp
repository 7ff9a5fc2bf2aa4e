#include "platform/win32/message_font.h"

namespace fliglaf::platform {
namespace {

/// Of the screen, for measuring.
class ScreenContext {
 public:
  ScreenContext() : context_(GetDC(nullptr)) {}
  ~ScreenContext() { ReleaseDC(nullptr, context_); }
  ScreenContext(const ScreenContext&) = delete;
  ScreenContext& operator=(const ScreenContext&) = delete;

  [[nodiscard]] HDC get() const { return context_; }

 private:
  HDC context_;
};

/// DPI_AWARENESS_CONTEXT_SYSTEM_AWARE, which older versions of Windows do not have.
void* SystemAware() { return reinterpret_cast<void*>(static_cast<INT_PTR>(-2)); }

/// Makes the thread's windows for another resolution; null where Windows cannot.
void* SetThreadResolution(void* context) {
  using Set = void*(WINAPI*)(void*);
  static const auto set = reinterpret_cast<Set>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"user32.dll"), "SetThreadDpiAwarenessContext")));
  return set == nullptr ? nullptr : set(context);
}

}  // namespace

SystemResolution::SystemResolution() : before_(SetThreadResolution(SystemAware())) {}

SystemResolution::~SystemResolution() {
  if (before_ != nullptr) SetThreadResolution(before_);
}

MessageFont::MessageFont() {
  const SystemResolution resolution;
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  font_ = CreateFontIndirectW(&metrics.lfMessageFont);
  dots_per_inch_ = GetDeviceCaps(ScreenContext().get(), LOGPIXELSY);
}

Size MessageFont::TextSize(std::u16string_view text) const {
  const ScreenContext screen;
  const HGDIOBJ before = SelectObject(screen.get(), font_);
  SIZE size = {};
  GetTextExtentPoint32W(screen.get(), reinterpret_cast<const wchar_t*>(text.data()),
                        static_cast<int>(text.size()), &size);
  SelectObject(screen.get(), before);
  const auto twips = [this](LONG pixels) {
    return static_cast<int>((pixels * 1440 + dots_per_inch_ - 1) / dots_per_inch_);
  };
  return {twips(size.cx), twips(size.cy)};
}

}  // namespace fliglaf::platform
