#include "editors/edit_figmpu40.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>

#include "editors/fuse_tables.h"
#include "resources/string_table.h"
#include "shared/text.h"

namespace fliglaf {
namespace {

using platform::ComboBox;
using platform::kTwipsPerPixel;
using platform::Label;

// Where a page stands in the window, in twips.
constexpr int kPageLeft = 360;
constexpr int kPageTop = 240;

constexpr int kButtonGap = 6 * kTwipsPerPixel;
constexpr int kAboveButtons = 10 * kTwipsPerPixel;

/// Lock bits 1 and 0 by the entry of the lock mode. 01 is no mode.
constexpr std::array<std::uint8_t, 3> kLockModes{0x03, 0x02, 0x00};
constexpr std::uint8_t kLockModeBits = 0x03;
constexpr int kNoLock = 0;

// Bits that no combo box stands for are stored as 1.
constexpr std::uint8_t kFreeLockBits = 0x80;
constexpr std::uint8_t kFreeExtendedBits = 0xE0;

/// What parts without extended fuses get.
constexpr std::uint8_t kNoExtended = 0x07;

/// The bit of the write/erase lock byte that is stored as 1 whatever its list says.
constexpr std::uint8_t kOpenBlock = 0x80;
constexpr std::uint8_t kFourBlockVariant = 14;
constexpr std::uint8_t kOpenBlockOfFour = 0x04;

bool Bit(std::uint8_t byte, std::size_t number) { return (byte >> number & 1) != 0; }

void FilterHexadecimal(platform::TextBox& box) {
  box.on_key_press = [&box](char16_t& character) {
    const bool digit = (character >= u'0' && character <= u'9') ||
                       (character >= u'a' && character <= u'f') ||
                       (character >= u'A' && character <= u'F');
    if (digit) {
      box.selection_length = 1;  // typing overwrites
    } else {
      character = 0;
    }
  };
}

/// From the start of the fuse area.
enum FuseByte : std::uint8_t { kLow, kCalibration, kHigh, kLock, kExtended };
constexpr std::int64_t kFuseBytes = 5;
constexpr std::int64_t kSecurityBytes = 2;

}  // namespace

edit_figmpu40::edit_figmpu40(EditorServices services) : ConfigurationEditor(std::move(services)) {
  AddFusePage();
  AddSecurityPage();
  form_.controls.push_back(&OKButton);
  form_.controls.push_back(&CancelButton);

  FilterHexadecimal(Text1);
  FilterHexadecimal(Text3);
  Text1.on_key_down = [](int& pressed) {
    if (pressed == platform::key::kDelete) pressed = 0;
  };
  for (ComboBox& combo : Combo6) {
    combo.on_click = [this] { Text8[0].text = HexDigits(BitsOf(Combo6), 2); };
  }
  for (ComboBox& combo : Combo7) {
    combo.on_click = [this] { Text8[1].text = HexDigits(BitsOf(Combo7), 2); };
  }
}

void edit_figmpu40::AddFusePage() {
  AddBits(fuse_rows_, "low", 0, Label1, Combo1);
  AddBits(fuse_rows_, "high", 1, Label4, Combo4);
  fuse_rows_.push_back({"calibration", 0, 8, 1, &Label2[0], &Text1});
  fuse_rows_.push_back({"", 0, 0, 1, &Label2[2], &Text3});
  AddBits(fuse_rows_, "extended", 2, Label5, Combo5);
  fuse_rows_.push_back({"lock", 0, 2, 2, &Label3[0], &Combo3[0], kLockModes});
  AddBits(fuse_rows_, "lock", 2, std::span(Label3).subspan(1), std::span(Combo3).subspan(1, 4), 2);
  fuse_rows_.push_back({"lock", 6, 1, 2, nullptr, &Combo3[5]});
  Add(Frame1, fuse_rows_);
  Label2[1].container = &Frame1;
  form_.controls.push_back(&Label2[1]);
}

void edit_figmpu40::AddSecurityPage() {
  security_rows_.push_back({"", 0, 0, 0, &Label8[0], &Text8[0]});
  AddBits(security_rows_, "write-lock", 0, Label6, Combo6);
  security_rows_.push_back({"", 0, 0, 1, &Label8[1], &Text8[1]});
  AddBits(security_rows_, "read-lock", 1, Label7, Combo7);
  Add(Frame2, security_rows_);
}

/// Everything as it is before a page has been chosen.
void edit_figmpu40::Design() {
  for (platform::Control* const control : form_.controls)
    control->visible = control->enabled = true;
  Frame1.visible = Frame2.visible = false;
  const auto number = [](std::span<Label> labels, std::u16string_view name) {
    char16_t digit = u'0';
    for (Label& label : labels) label.caption = std::u16string(name) + digit++ + u":";
  };
  number(Label1, u"Low Fuse Bit ");
  number(Label4, u"High Fuse Bit ");
  number(Label5, u"Ext. Fuse Bit ");
  number(Label6, u"Flash Block ");
  constexpr std::array<std::u16string_view, 5> kLockCaptions{
      u"Lock Bit", u"Boot Lock Bit01:", u"Boot Lock Bit02:", u"Boot Lock Bit11:",
      u"Boot Lock Bit12:"};
  for (std::size_t i = 0; i < Label3.size(); ++i) Label3[i].caption = kLockCaptions[i];
  Label2[0].caption = u"Calibration Byte:";
  Label2[1].caption = u"Cal Addr:";
  Label2[2].caption = u"Cal Buffer Addr:";
  Text1.longest = Text8[0].longest = Text8[1].longest = 2;
  Text3.longest = 6;
  Text3.text = u"FFFFFF";
}

bool edit_figmpu40::Serves(std::uint8_t mode) {
  const ConfigArea area = ConfigPageOf(mode).area;
  return area == ConfigArea::kFuses || area == ConfigArea::kBlockLocks;
}

std::span<std::uint8_t> edit_figmpu40::Bytes(ConfigArea page) {
  const ImageLayout layout = LayoutOf(vars().quorinprgmode[0], SizesOf(vars()));
  const std::int64_t bytes = page == ConfigArea::kFuses ? kFuseBytes : kSecurityBytes;
  return vars().quorinibuffer.Range(layout.config_start, bytes);
}

void edit_figmpu40::Form_Load() {
  const bool serves = Serves(vars().quorinprgmode[0]);
  const ConfigArea page = serves ? ConfigPageOf(vars().quorinprgmode[0]).area : ConfigArea::kNone;
  if (serves) static_cast<void>(Bytes(page));
  page_ = page;
  rows_.clear();
  Design();
  form_.caption = Text(resources::text::kEditConfiguration);
  Frame1.caption = Text(resources::text::kProgConfig);
  Frame1.left = kPageLeft;
  Frame1.top = kPageTop;
  OKButton.caption = Text(resources::text::kOk);
  CancelButton.caption = Text(resources::text::kCancel);
  if (page == ConfigArea::kBlockLocks) {
    LoadSecurity();
  } else if (page == ConfigArea::kFuses) {
    LoadFuses();
  }
}

void edit_figmpu40::LoadSecurity() {
  Frame1.visible = false;
  Frame2.left = Frame1.left;
  Frame2.top = Frame1.top;
  Frame2.caption = u"Flash Program Memory Security Bytes";
  Frame2.visible = true;
  Label8[0].caption = u"Write/Erase Lock Byte:";
  Label8[1].caption = u"Read Lock Byte:";
  Text8[0].enabled = Text8[1].enabled = false;
  Fill(Combo6, {u"0 (locked)", u"1 (unlocked)"}, 1);
  Fill(Combo7, {u"0 (locked)", u"1 (unlocked)"}, 1);

  const std::uint8_t variant = vars().quorinwoption[0];
  for (const BlockCaptions& row : kBlockCaptions) {
    if (std::ranges::find(row.variants, variant) == row.variants.end()) continue;
    for (std::size_t i = 0; i < Label6.size(); ++i) Label6[i].caption = row.blocks[i];
  }
  for (std::size_t i = 0; i < Label7.size(); ++i) Label7[i].caption = Label6[i].caption;

  const auto bytes = Bytes(ConfigArea::kBlockLocks);
  ShowBits(Combo6, bytes[0]);
  ShowBits(Combo7, bytes[1]);
  Text8[0].text = HexDigits(bytes[0], 2);
  Text8[1].text = HexDigits(bytes[1], 2);
  rows_ = security_rows_;
  LayOut(Frame2);
}

void edit_figmpu40::LoadFuses() {
  Frame2.visible = false;
  Frame1.visible = true;
  const std::vector<std::u16string> levels{Text(resources::text::kEnable) + u"(0)",
                                           Text(resources::text::kDisable) + u"(1)"};
  for (const std::span<ComboBox> combos :
       {std::span<ComboBox>(Combo1), std::span<ComboBox>(Combo4), std::span<ComboBox>(Combo5),
        std::span<ComboBox>(Combo3).subspan(1)}) {
    Fill(combos, levels, 1);
  }
  Fill(std::span(Combo3).first(1), {u"No Lock", u"Lock Bit1", u"Lock bit12"}, kNoLock);
  Label2[1].visible = false;
  Combo3[5].visible = false;

  const auto bytes = Bytes(ConfigArea::kFuses);
  Text1.text = services().datstr(bytes[kCalibration], 2);
  const auto mode =
      std::ranges::find(kLockModes, static_cast<std::uint8_t>(bytes[kLock] & kLockModeBits));
  if (mode != kLockModes.end()) Combo3[0].chosen = static_cast<int>(mode - kLockModes.begin());
  ShowBits(Combo1, bytes[kLow]);
  ShowBits(Combo4, bytes[kHigh]);
  ShowBits(std::span(Combo3).subspan(1), bytes[kLock], 2);
  ShowBits(Combo5, bytes[kExtended]);
  CaptionFuses(vars().quorinwoption[0]);
  rows_ = fuse_rows_;
  LayOut(Frame1);
}

void edit_figmpu40::CaptionFuses(std::uint8_t variant) {
  const auto row = std::ranges::find(kFuseVariants, variant, &FuseVariant::variant);
  if (row == kFuseVariants.end()) return;

  const auto apply = [](std::span<Label> labels, std::span<ComboBox> combos,
                        std::span<const std::u16string_view> captions, std::uint8_t hidden) {
    for (std::size_t i = 0; i < labels.size(); ++i) {
      if (!captions[i].empty()) labels[i].caption = captions[i];
      labels[i].visible = combos[i].visible = !Bit(hidden, i);
    }
  };
  apply(Label1, Combo1, row->captions->low, row->low_hidden);
  apply(Label4, Combo4, row->captions->high, row->high_hidden);
  apply(Label5, Combo5, row->captions->extended, row->extended_hidden);
  for (const OwnCaption& own : kOwnCaptions) {
    if (own.variant != variant) continue;
    Label& label = own.byte == OwnCaption::Of::kLow    ? Label1[own.bit]
                   : own.byte == OwnCaption::Of::kHigh ? Label4[own.bit]
                                                       : Label5[own.bit];
    label.caption = own.caption;
  }
  for (std::size_t i = 0; i < Combo4.size(); ++i) Combo4[i].enabled = !Bit(row->high_disabled, i);
  Label2[0].visible = Text1.visible = row->has_calibration;
  Text1.enabled = row->calibration_enabled;
}

/// The page, and below it at its right edge the buttons.
void edit_figmpu40::LayOut(platform::Frame& frame) {
  const PageLayout layout(desktop());
  layout.Arrange(frame, rows_);
  const platform::Size button = layout.ButtonSize(OKButton, CancelButton);
  frame.width = std::max(frame.width, 2 * button.width + kButtonGap);
  const int right = frame.left + frame.width;
  const int top = frame.top + frame.height + kAboveButtons;
  OKButton.Move(right - 2 * button.width - kButtonGap, top, button);
  CancelButton.Move(right - button.width, top, button);
  form_.size = {right + kPageLeft + platform::Form::kBorder.width,
                top + button.height + kPageTop + platform::Form::kBorder.height};
}

/// The host may have turned to another device meanwhile: only the page that is shown is stored.
void edit_figmpu40::Store() {
  if (ConfigPageOf(vars().quorinprgmode[0]).area != page_) return;
  if (page_ == ConfigArea::kBlockLocks) {
    StoreSecurity();
  } else if (page_ == ConfigArea::kFuses) {
    StoreFuses();
  }
}

void edit_figmpu40::StoreSecurity() {
  const auto bytes = Bytes(ConfigArea::kBlockLocks);
  const bool four = vars().quorinwoption[0] == kFourBlockVariant;
  bytes[0] = BitsOf(Combo6) | (four ? kOpenBlockOfFour : kOpenBlock);
  bytes[1] = BitsOf(Combo7);
}

void edit_figmpu40::StoreFuses() {
  const auto bytes = Bytes(ConfigArea::kFuses);
  const bool has_extended = ConfigPageOf(vars().quorinprgmode[0]).has_extended_fuses;
  bytes[kLow] = BitsOf(Combo1);
  bytes[kHigh] = BitsOf(Combo4);
  bytes[kLock] = kFreeLockBits | BitsOf(std::span(Combo3).subspan(1), 2) |
                 kLockModes[static_cast<std::size_t>(Combo3[0].chosen)];
  bytes[kExtended] = has_extended ? kFreeExtendedBits | BitsOf(Combo5) : kNoExtended;
}

}  // namespace fliglaf
