#include "platform/desktop.h"

#include "platform/form.h"

namespace fliglaf::platform {
namespace {

constexpr int kCharacterWidth = 6 * kTwipsPerPixel;
constexpr int kLineHeight = 13 * kTwipsPerPixel;
/// Where the scripts with wide characters begin.
constexpr char16_t kFirstWide = 0x1100;

}  // namespace

Size Desktop::TextSize(std::u16string_view text) {
  int width = 0;
  for (const char16_t character : text) {
    width += character < kFirstWide ? kCharacterWidth : 2 * kCharacterWidth;
  }
  return {width, kLineHeight};
}

}  // namespace fliglaf::platform
