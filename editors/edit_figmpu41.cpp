#include "editors/edit_figmpu41.h"

#include <algorithm>
#include <limits>
#include <span>
#include <string>
#include <utility>

#include "resources/string_table.h"
#include "shared/text.h"

namespace fliglaf {
namespace {

using platform::kTwipsPerPixel;
using platform::Size;

/// Where frames of other pages are put.
constexpr int kOutOfView = 1000 * kTwipsPerPixel;
/// Between a frame and what is below it.
constexpr int kBelow = 5 * kTwipsPerPixel;
/// The window's outer size: twips for each pixel of what is in it, and pixels for the rest.
constexpr int kOuterTwips = 16;
constexpr int kBesideFrame = 4;
constexpr int kAboveFrame = 29;

/// Bits that no list stands for, stored as 1.
constexpr std::uint8_t kFreeFuseBits = 0xF0;
constexpr std::uint8_t kFreeLockBits = 0xFC;

constexpr std::uint8_t kErased = 0xFF;

int HexDigit(char16_t character) {
  if (character >= u'0' && character <= u'9') return character - u'0';
  if (character >= u'A' && character <= u'F') return character - u'A' + 10;
  if (character >= u'a' && character <= u'f') return character - u'a' + 10;
  return -1;
}

/// The lock byte, or the first of fuse and lock bits, in the data buffer.
std::int64_t ConfigStart(const SharedVariables& vars) {
  return LayoutOf(vars.quorinprgmode[0], SizesOf(vars)).config_start;
}

/// Twips for the outer size of a window around `length` twips.
int Outer(int length, int pixels_more) {
  return (length / kTwipsPerPixel + pixels_more) * kOuterTwips;
}

}  // namespace

bool edit_figmpu41::Serves(std::uint8_t mode) {
  const ConfigArea area = ConfigPageOf(mode).area;
  return area == ConfigArea::kLockByte || area == ConfigArea::kFuseAndLock;
}

std::int32_t edit_figmpu41::ParseHex(std::u16string_view text) {
  std::int64_t value = 0;
  for (const char16_t character : text) {
    const int digit = HexDigit(character);
    if (digit < 0) return kNoNumber;
    value = std::min<std::int64_t>(value * 16 + digit, std::numeric_limits<std::int32_t>::max());
  }
  return static_cast<std::int32_t>(value);
}

edit_figmpu41::edit_figmpu41(EditorServices services) : ConfigurationEditor(std::move(services)) {
  lock_byte_rows_.push_back({"lock", 0, 8, 0, &Label1[0], &Text1[0]});
  AddBits(bit_rows_, "fuse", 0, Label2, Combo2);
  AddBits(bit_rows_, "lock", 0, Label3, Combo3);
  Add(Frame1, lock_byte_rows_);
  Add(Frame2, std::span(bit_rows_).first(4));
  Add(Frame3, std::span(bit_rows_).last(2));
  form_.controls.push_back(&OKButton);
  form_.controls.push_back(&CancelButton);

  // Enter ends a line, which the release of the key takes away again.
  Text1[0].takes_return = true;
  Text1[0].on_key_press = [this](char16_t& character) { Text1_KeyPress(character); };
  Text1[0].on_key_up = [this](int pressed) { Text1_KeyUp(pressed); };
  Text1[0].on_lost_focus = [this] { Text1_LostFocus(); };
}

void edit_figmpu41::Text1_KeyPress(char16_t& character) {
  platform::TextBox& box = Text1[0];
  if (character == u' ' && ParseHex(box.text) == kNoNumber) {
    box.text = u"0";
    box.selection_start = 1;
    box.selection_length = 0;
    character = 0;
  }
  // One line end, and that at the end, wherever the user was in the text.
  if (character == platform::key::kReturn) {
    if (box.text.ends_with(u"\r\n")) character = 0;
    box.selection_start = box.text.size();
    box.selection_length = 0;
  }
}

void edit_figmpu41::Text1_KeyUp(int pressed) {
  if (pressed != platform::key::kReturn) return;
  std::u16string& text = Text1[0].text;
  text.resize(text.size() - std::min<std::size_t>(text.size(), 2));
  form_.SetFocus(OKButton);
}

void edit_figmpu41::Text1_LostFocus() {
  if (ParseHex(Text1[0].text) == kNoNumber) Text1[0].text = u"FF";
}

void edit_figmpu41::Form_Load() {
  const ConfigArea page = ConfigPageOf(vars().quorinprgmode[0]).area;
  const std::int64_t start = ConfigStart(vars());
  if (page == ConfigArea::kLockByte) {
    static_cast<void>(vars().quorinibuffer[start]);
  } else if (page == ConfigArea::kFuseAndLock) {
    static_cast<void>(vars().quorinibuffer.Range(start, 2));
  }
  page_ = page;
  bits_start_ = start;
  rows_.clear();
  form_.caption = Text(resources::text::kEditConfiguration);
  OKButton.caption = Text(resources::text::kOk);
  CancelButton.caption = Text(resources::text::kCancel);
  for (platform::Frame* const frame : {&Frame1, &Frame2, &Frame3}) {
    frame->left = kOutOfView;
    frame->visible = false;
  }
  if (page == ConfigArea::kLockByte) {
    LoadLockByte();
  } else if (page == ConfigArea::kFuseAndLock) {
    LoadBits();
  }
}

void edit_figmpu41::LoadLockByte() {
  const std::int64_t index = ConfigStart(vars());
  Frame1.caption = u"Lock Byte Editor";
  Label1[0].caption = u"Address \"" + HexNumber(index) + u"\" Value: ";
  Text1[0].text = HexDigits(vars().quorinibuffer[index], 2);
  rows_ = lock_byte_rows_;
  LayOut(Frame1, nullptr);
}

void edit_figmpu41::LoadBits() {
  Frame2.caption = u"Fuse Bit Definitions:";
  Frame3.caption = u"Lock Bit Definitions:";
  constexpr std::array<std::u16string_view, 4> kFuses{u"Bit 0 ISP Enable", u"Bit 1 XTAL Osc Bypass",
                                                      u"Bit 2 User Row Programming",
                                                      u"Bit 3 System Clock Out"};
  for (std::size_t i = 0; i < Label2.size(); ++i) Label2[i].caption = kFuses[i];
  Label3[0].caption = u"Bit 0 Lock Bit 1";
  Label3[1].caption = u"Bit 1 Lock Bit 2";
  Fill(Combo2, {u"0 Enable", u"1 Disable"}, 1);
  Fill(Combo3, {u"0 Locked", u"1 Unlocked"}, 1);
  ShowBits(Combo2, vars().quorinibuffer[bits_start_]);
  ShowBits(Combo3, vars().quorinibuffer[bits_start_ + 1]);
  Combo2[0].enabled = false;
  rows_ = bit_rows_;
  LayOut(Frame2, &Frame3);
}

/// The frames of a page, centred, with the buttons below them; the window around them.
void edit_figmpu41::LayOut(platform::Frame& page, platform::Frame* below) {
  const PageLayout layout(desktop());
  const Size button = layout.ButtonSize(OKButton, CancelButton);
  int width = 2 * button.width;
  int height = 0;  // of all frames
  for (platform::Frame* const frame : {&page, below}) {
    if (frame == nullptr) continue;
    frame->visible = true;
    layout.Arrange(*frame, rows_);
    width = std::max(width, frame->width);
    height += frame->height;
  }
  page.width = width;
  form_.size = {Outer(width, kBesideFrame), Outer(height + button.height, kAboveFrame)};

  const Size inner = form_.InnerSize();
  const int gaps = below == nullptr ? 0 : 2 * kBelow;
  page.left = (inner.width - width) / 2;
  page.top = (inner.height - height - button.height - gaps) / 2;
  int bottom = page.top + page.height;
  if (below != nullptr) {
    below->Move(page.left, bottom + kBelow, {width, below->height});
    bottom = below->top + below->height;
  }
  OKButton.Move(page.left + width - 2 * button.width, bottom + kBelow, button);
  CancelButton.Move(OKButton.left + button.width, OKButton.top, button);
}

/// The host may have turned to another device meanwhile: only the page that is shown is stored.
void edit_figmpu41::Store() {
  if (ConfigPageOf(vars().quorinprgmode[0]).area != page_) return;
  if (page_ == ConfigArea::kLockByte) {
    const std::int32_t value = ParseHex(Text1[0].text);
    const bool is_byte = value >= 0 && value <= 0xFF;
    vars().quorinibuffer[ConfigStart(vars())] =
        is_byte ? static_cast<std::uint8_t>(value) : kErased;
  } else if (page_ == ConfigArea::kFuseAndLock) {
    const auto bytes = vars().quorinibuffer.Range(bits_start_, 2);
    bytes[0] = BitsOf(Combo2) ^ kFreeFuseBits;
    bytes[1] = BitsOf(Combo3) ^ kFreeLockBits;
  }
}

}  // namespace fliglaf
