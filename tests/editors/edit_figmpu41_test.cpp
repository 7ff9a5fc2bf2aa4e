#include "editors/edit_figmpu41.h"

#include <string>

#include "tests/editors/editor_test.h"

namespace fliglaf {
namespace {

using platform::kTwipsPerPixel;

class LockEditor : public test::EditorTest<edit_figmpu41> {
 protected:
  static constexpr int kSize = 1000;
  static constexpr int kLockByte = kSize - 64 - 1;
  static constexpr int kFuse = kSize - 32;
  static constexpr int kLock = kSize - 31;

  LockEditor() {
    vars.quorintlength[0] = kSize;
    vars.quorinpagelength[0] = 64;
  }

  int StoredText(std::u16string_view text) {
    edit_figmpu41& editor = Open(12, 0);
    editor.Text1[0].text = text;
    editor.OKButton.Click();
    return vars.quorinibuffer[kLockByte];
  }

  /// The text after typing `keys` over nothing.
  std::u16string Typed(std::u16string_view keys) {
    edit_figmpu41& editor = Open(12, 0);
    editor.form().SetFocus(editor.Text1[0]);
    editor.Text1[0].text.clear();
    for (const char16_t character : keys) editor.Text1[0].Type(character);
    return editor.Text1[0].text;
  }
};

TEST_F(LockEditor, StoresTheLockByteThatTheTextTells) {
  EXPECT_EQ(StoredText(u"3f"), 0x3F);
  EXPECT_EQ(StoredText(u"00000000F"), 0x0F);
  EXPECT_EQ(StoredText(u"0"), 0);
  EXPECT_EQ(StoredText(u""), 0);
  EXPECT_EQ(StoredText(u"1FF"), 0xFF);
  EXPECT_EQ(StoredText(u"G1"), 0xFF);
  EXPECT_EQ(StoredText(u"-1"), 0xFF);
  EXPECT_EQ(StoredText(u"80000000000000001"), 0xFF);
  for (int value = 0; value < 256; ++value) {
    vars.quorinibuffer[kLockByte] = static_cast<std::uint8_t>(value);
    const auto before = buffer();
    edit_figmpu41& editor = Open(12, 0);
    EXPECT_EQ(editor.Text1[0].text, HexDigits(value, 2));
    editor.OKButton.Click();
    EXPECT_EQ(Changed(before), "");
  }
  EXPECT_EQ(edit_figmpu41::ParseHex(u"aBc"), 0xABC);
}

TEST_F(LockEditor, ShowsThePageOfTheFamily) {
  edit_figmpu41& editor = Open(12, 0);
  EXPECT_EQ(editor.form().caption, u"Edit Configuration");
  EXPECT_EQ(editor.Frame1.caption, u"Lock Byte Editor");
  EXPECT_EQ(editor.Label1[0].caption, u"Address \"3A7\" Value: ");
  EXPECT_FALSE(editor.Frame2.visible || editor.Frame3.visible);
  vars.quorinprgmode[0] = 15;
  editor.Open(shared_);
  EXPECT_FALSE(editor.Frame1.visible);
  EXPECT_EQ(editor.Frame2.caption, u"Fuse Bit Definitions:");
  EXPECT_EQ(editor.Frame3.caption, u"Lock Bit Definitions:");
  EXPECT_EQ(editor.Label2[2].caption, u"Bit 2 User Row Programming");
  EXPECT_EQ(editor.Label3[1].caption, u"Bit 1 Lock Bit 2");
  EXPECT_FALSE(editor.Combo2[0].enabled);
  EXPECT_TRUE(editor.Combo2[1].enabled && editor.Combo3[0].enabled);
}

TEST_F(LockEditor, StoresFuseAndLockBitsWithTheOthersSet) {
  for (int value = 0; value < 256; ++value) {
    vars.quorinibuffer[kFuse] = static_cast<std::uint8_t>(value);
    vars.quorinibuffer[kLock] = static_cast<std::uint8_t>(~value);
    Open(15, 0).OKButton.Click();
    EXPECT_EQ(vars.quorinibuffer[kFuse], value | 0xF0);
    EXPECT_EQ(vars.quorinibuffer[kLock], (~value & 0xFF) | 0xFC);
  }
  const auto before = buffer();
  std::string bits;
  for (std::size_t i = 0; i < 6; ++i) {
    edit_figmpu41& editor = Open(15, 0);
    auto& list = i < 4 ? editor.Combo2[i] : editor.Combo3[i - 4];
    list.Choose(1 - list.chosen);
    editor.OKButton.Click();
    bits += Changed(before) + " ";
    std::ranges::copy(before, vars.quorinibuffer.Range(0, std::ssize(before)).begin());
  }
  EXPECT_EQ(bits, "968.0 968.1 968.2 968.3 969.0 969.1 ");
  edit_figmpu41& editor = Open(15, 0);
  editor.Combo3[1].Choose(0);
  editor.CancelButton.Click();
  EXPECT_EQ(Changed(before), "");
}

TEST_F(LockEditor, KeepsThePlaceOfTheBitsFromLoadToOk) {
  edit_figmpu41& editor = Open(15, 0);
  editor.Combo3[0].Choose(0);
  vars.quorintlength[0] = 500;
  editor.OKButton.Click();
  EXPECT_EQ(vars.quorinibuffer[kLock], 0xFC);
  EXPECT_EQ(vars.quorinibuffer[500 - 31], 0);
}

TEST_F(LockEditor, AcceptsKeysAndPutsWrongTextsRight) {
  EXPECT_EQ(Typed(u"7e"), u"7e");
  EXPECT_EQ(Typed(u"7x "), u"0");
  EXPECT_EQ(Typed(u"7 "), u"7 ");

  edit_figmpu41& editor = Open(12, 0);
  platform::TextBox& box = editor.Text1[0];
  const auto enter_on = [&](std::u16string_view text, std::size_t selected) {
    editor.form().SetFocus(box);
    box.text = text;
    box.selection_start = 0;
    box.selection_length = selected;
    box.Type(u'\r');
    EXPECT_EQ(editor.form().focus, &editor.OKButton);
    return box.text;
  };
  EXPECT_EQ(enter_on(u"3F", 0), u"3F");
  EXPECT_EQ(enter_on(u"3F", 2), u"3F");
  EXPECT_EQ(enter_on(u"zz", 0), u"FF") << "the focus was lost";

  const auto release_on = [&](std::u16string_view text) {
    box.text = text;
    box.on_key_up(platform::key::kReturn);
    return box.text;
  };
  EXPECT_EQ(release_on(u"1234"), u"12");
  EXPECT_EQ(release_on(u"1"), u"");
  EXPECT_EQ(release_on(u""), u"");
}

/// In pixels of a plain screen, of which an inch has 96; the window's outer size counts 16 twips
/// for each.
TEST_F(LockEditor, PlacesItsFramesAndButtons) {
  const auto pixels = [](int twips) { return twips / kTwipsPerPixel; };
  for (const int mode : {12, 15}) {
    edit_figmpu41& editor = Open(mode, 0);
    ExpectTidy();
    const bool bits = mode == 15;
    const platform::Frame& page = bits ? editor.Frame2 : editor.Frame1;
    const platform::Frame& last = bits ? editor.Frame3 : editor.Frame1;
    const auto& ok = editor.OKButton;
    const auto& cancel = editor.CancelButton;
    EXPECT_EQ(pixels((bits ? editor.Frame1 : editor.Frame2).left), 1000);
    if (!bits) {
      EXPECT_EQ(pixels(editor.Frame3.left), 1000);
    }

    const int below = bits ? pixels(last.height) : 0;
    EXPECT_EQ(editor.form().size.width, (pixels(page.width) + 4) * 16);
    EXPECT_EQ(editor.form().size.height,
              (pixels(page.height) + 29 + pixels(ok.height) + below) * 16);
    const platform::Size inner = editor.form().InnerSize();
    EXPECT_NEAR(page.left, (inner.width - page.width) / 2, 1);
    const int used = page.height + ok.height + (bits ? last.height + 10 * kTwipsPerPixel : 0);
    EXPECT_NEAR(page.top, (inner.height - used) / 2, 1);
    if (bits) {
      EXPECT_EQ(last.left, page.left);
      EXPECT_EQ(last.top, page.top + page.height + 5 * kTwipsPerPixel);
      EXPECT_EQ(editor.Combo2[0].left, editor.Combo3[0].left);
    }
    EXPECT_EQ(ok.top, last.top + last.height + 5 * kTwipsPerPixel);
    EXPECT_EQ(ok.left, page.left + page.width - 2 * ok.width);
    EXPECT_EQ(cancel.top, ok.top);
    EXPECT_EQ(cancel.left, ok.left + ok.width);
    EXPECT_EQ(cancel.width, ok.width);
    EXPECT_EQ(cancel.height, ok.height);
    const auto& controls = editor.form().controls;
    EXPECT_EQ(controls[controls.size() - 2], &ok);
    EXPECT_EQ(controls.back(), &cancel);
  }
}

}  // namespace
}  // namespace fliglaf
