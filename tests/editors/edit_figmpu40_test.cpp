#include "editors/edit_figmpu40.h"

#include <algorithm>
#include <string>
#include <vector>

#include "shared/range_error.h"
#include "tests/editors/editor_test.h"

namespace fliglaf {
namespace {

using platform::ComboBox;
using platform::Control;

class FuseEditor : public test::EditorTest<edit_figmpu40> {
 protected:
  static constexpr std::int32_t kSize = 1000;
  static constexpr int kLow = 2 * kSize - 32;
  static constexpr int kHigh = kLow + 2;
  static constexpr int kLock = kLow + 3;
  static constexpr int kExtended = kLow + 4;
  static constexpr int kWrite = kSize - 100 - 16 - 2;
  static constexpr int kRead = kWrite + 1;

  FuseEditor() {
    vars.quorintlength[0] = kSize;
    vars.quorinbvcch[0] = 100;
    vars.quorinpagelength[0] = 16;
  }

  /// The visible rows, byte by byte: "CAPTION CAPTION / CAPTION ...", colons left out, a "-" before
  /// what can be seen only.
  std::string Rows(int mode, int variant) {
    std::string told;
    std::string_view byte = "low";
    for (const PageRow& row : Open(mode, variant).rows()) {
      if (!row.control->visible) continue;
      if (row.byte != byte) told += "/ ";
      byte = row.byte;
      std::u16string caption = row.label->caption;
      if (caption.ends_with(u':')) caption.pop_back();
      if (!row.control->enabled) told += '-';
      told += std::string(caption.begin(), caption.end()) + ' ';
    }
    ExpectTidy();
    return told;
  }

  /// The byte at `index` after it was `value` when the editor was opened and OK was pressed.
  int Stored(int index, int value) {
    vars.quorinibuffer[index] = static_cast<std::uint8_t>(value);
    Open().OKButton.Click();
    return vars.quorinibuffer[index];
  }
};

TEST_F(FuseEditor, ShowsWhatAVariantHas) {
  const std::string cal = "/ -Calibration Byte / Cal Buffer Addr ";
  const std::string lock =
      "/ Lock Bit Boot Lock Bit01 Boot Lock Bit02 Boot Lock Bit11 Boot Lock Bit12 ";
  const std::string a =
      "CKSEL0 CKSEL1 CKSEL2 CKSEL3 SUT0 SUT1 CKOUT CKDIV8 "
      "/ BOOTRST BOOTSZ0 BOOTSZ1 EESAVE WDTON SPIEN -JTAGEN OCDEN " +
      cal;
  const std::string b =
      "CKSEL0 CKSEL1 CKSEL2 CKSEL3 SUT0 SUT1 BODEN BODLEVEL "
      "/ BOOTRST BOOTSZ0 BOOTSZ1 EESAVE CKOPT SPIEN ";
  const std::string d =
      "CKSEL0 CKSEL1 CKSEL2 CKSEL3 SUT0 SUT1 CKOUT CKDIV8 "
      "/ BODLEVEL0 BODLEVEL1 BODLEVEL2 EESAVE WDTON -SPIEN DWEN -RSTDISBL "
      "/ Calibration Byte / Cal Buffer Addr ";
  const std::vector<std::pair<int, std::string>> variants{
      {4, a + "/ RSTDISBL BODLEVEL0 BODLEVEL1 BODLEVEL2 " + lock},
      {7, a + "/ BODLEVEL0 BODLEVEL1 BODLEVEL2 M161C " + lock},
      {8, a + "/ RSTDISBL BODLEVEL0 BODLEVEL1 " + lock},
      {9, a + "/ TA0SEL BODLEVEL0 BODLEVEL1 BODLEVEL2 " + lock},
      {5, b + "-JTAGEN OCDEN " + cal + "/ WDTON M103C " + lock},
      {6, b + "-JTAGEN OCDEN " + cal + lock},
      {11, b + "-WDTON S8535C " + cal + lock},
      {12, b + "-WDTON RSTDISBL " + cal + lock},
      {13, b + "-WDTON S8515C " + cal + lock},
      {14, "CKSEL0 CKSEL1 CKSEL2 BODEN BODLEVEL SPIEN BOOTRST / Cal Buffer Addr " + lock},
      {10, "CKSEL CUT0 CUT1 BOOTRST BOOTSZ0 BOOTSZ1 EESAVE WDTON / -JTAGEN OCDEN " + cal + lock},
      {15, d + "/ SELFPRGEN " + lock},
      {16, d + "/ BOOTRST BOOTSZ0 BOOTSZ1 " + lock},
  };
  for (const int mode : {4, 5, 6, 7, 13, 14}) {
    for (const auto& [variant, rows] : variants) EXPECT_EQ(Rows(mode, variant), rows) << variant;
    const std::string other = Rows(mode, 99);
    EXPECT_EQ(other.find('-'), std::string::npos) << other;
    EXPECT_EQ(std::ranges::count(other, '/'), 5) << other;
  }
}

TEST_F(FuseEditor, ShowsTheBlocksOfAFlash) {
  const auto ends = [this](int mode, int variant) {
    edit_figmpu40& editor = Open(mode, variant);
    ExpectTidy();
    EXPECT_FALSE(editor.Frame1.visible);
    EXPECT_TRUE(editor.Frame2.visible);
    EXPECT_EQ(editor.Frame2.top, 240);
    EXPECT_FALSE(editor.Text8[0].enabled || editor.Text8[1].enabled);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(editor.Label6[i].caption, editor.Label7[i].caption);
    const std::u16string text = editor.Label6[7].caption + u"|" + editor.Label7[3].caption;
    return std::string(text.begin(), text.end());
  };
  for (const int mode : {8, 9, 10, 11}) {
    for (const int variant : {11, 21, 23, 25}) {
      EXPECT_EQ(ends(mode, variant), "0x7000 - 0x7DFD|0x3000 - 0x3FFF");
    }
    for (const int variant : {12, 22, 24}) {
      EXPECT_EQ(ends(mode, variant), "0x1C00 - 0x1DFD|0x0C00 - 0x0FFF");
    }
    EXPECT_EQ(ends(mode, 13), "0xE000 - 0xFDFD|0x6000 - 0x7FFF");
    EXPECT_EQ(ends(mode, 14), "No effect|0x6000 - 0x7FFD");
    EXPECT_EQ(ends(mode, 15), "0x1C000 - 0x1FBFD|0x0C000 - 0x0FFFF");
    EXPECT_EQ(ends(mode, 16), "Flash Block 7:|Flash Block 3:");
  }
}

TEST_F(FuseEditor, StoresEveryByteAsItWasButForTheBitsThatAreSet) {
  for (const int mode : {4, 5, 6, 7, 13, 14}) {
    Open(mode, 14);  // which hides most of them
    for (int value = 0; value < 256; ++value) {
      EXPECT_EQ(Stored(kLow, value), value);
      EXPECT_EQ(Stored(kLow + 1, value), value) << "the calibration byte";
      EXPECT_EQ(Stored(kHigh, value), value);
      const int no_mode = (value & 3) == 1 ? 2 : 0;
      EXPECT_EQ(Stored(kLock, value), value | 0x80 | no_mode);
      EXPECT_EQ(Stored(kExtended, value), mode == 13 ? 0x07 : value | 0xE0);
    }
  }
  for (const int mode : {8, 9, 10, 11}) {
    for (const int variant : {11, 14}) {
      Open(mode, variant);
      for (int value = 0; value < 256; ++value) {
        EXPECT_EQ(Stored(kWrite, value), value | (variant == 14 ? 0x04 : 0x80));
        EXPECT_EQ(Stored(kRead, value), value);
      }
    }
  }
}

TEST_F(FuseEditor, EachListStandsForABitOfItsOwn) {
  for (const auto& [mode, start] : {std::pair{4, kLow}, std::pair{8, kWrite}}) {
    std::ranges::fill(vars.quorinibuffer.Range(0, kBytes), std::uint8_t{0xFF});
    const auto before = buffer();
    Open(mode, 99);
    for (std::size_t i = 0; i < Open().rows().size(); ++i) {
      const PageRow row = Open().rows()[i];
      if (row.control->kind != Control::Kind::kComboBox) continue;
      edit_figmpu40& editor = Open();
      static_cast<ComboBox*>(editor.rows()[i].control)->Choose(row.bits == 2 ? 1 : 0);
      editor.OKButton.Click();
      constexpr std::array<std::string_view, 5> kBytesOfArea{"low", "", "high", "lock", "extended"};
      int index =
          static_cast<int>(std::ranges::find(kBytesOfArea, row.byte) - kBytesOfArea.begin());
      if (row.byte == "write-lock") index = 0;
      if (row.byte == "read-lock") index = 1;
      const bool forced = row.byte == "write-lock" && row.first_bit == 7;
      EXPECT_EQ(Changed(before),
                forced ? "" : std::to_string(start + index) + "." + std::to_string(row.first_bit));
      std::ranges::copy(before, vars.quorinibuffer.Range(0, std::ssize(before)).begin());
    }
  }
  Open(4, 4).Combo3[0].Choose(2);
  const auto before = buffer();
  Open(4, 4).Combo3[0].Choose(2);
  EXPECT_EQ(Changed(before), "") << "before OK";
  Open().CancelButton.Click();
  EXPECT_EQ(Changed(before), "");
}

TEST_F(FuseEditor, TellsTheLockBytesAsTheyAreEdited) {
  vars.quorinibuffer[kWrite] = 0x0F;
  vars.quorinibuffer[kRead] = 0xA0;
  edit_figmpu40& editor = Open(8, 14);
  EXPECT_EQ(editor.Text8[0].text + editor.Text8[1].text, u"0FA0");
  editor.Combo6[3].Choose(0);
  EXPECT_EQ(editor.Text8[0].text, u"07");
  editor.Combo7[0].Choose(1);
  EXPECT_EQ(editor.Text8[1].text, u"A1");
}

TEST_F(FuseEditor, TextsTakeHexadecimalDigitsThatOverwrite) {
  vars.quorinibuffer[kLow + 1] = 0x9C;
  edit_figmpu40& editor = Open(14, 16);
  platform::TextBox& box = editor.Text1;
  EXPECT_EQ(box.text, u"9C");
  for (const char16_t character : std::u16string(u"g\b a:")) box.Type(character);
  EXPECT_EQ(box.text, u"aC");
  box.PressDelete();
  EXPECT_EQ(box.text, u"aC");
  for (const char16_t character : std::u16string(u"FF")) box.Type(character);
  EXPECT_EQ(box.text, u"aF") << "it is full";
  editor.Text3.PressDelete();
  editor.Text3.Type(u'0');
  EXPECT_EQ(editor.Text3.text, u"0FFFF");
  editor.OKButton.Click();
  EXPECT_EQ(vars.quorinibuffer[kLow + 1], 0x9C);
}

TEST_F(FuseEditor, SpeaksTheLanguageOfTheUser) {
  for (int language = 0; language <= 21000; language += 3000) {
    vars.quorinLanguage[0] = language;
    edit_figmpu40& editor = Open(4, 4);
    ExpectTidy();
    EXPECT_EQ(editor.form().caption, desktop.LoadText(language + 1293));
    EXPECT_EQ(editor.Frame1.caption, desktop.LoadText(language + 2024));
    EXPECT_EQ(editor.OKButton.caption, desktop.LoadText(language + 1067));
    EXPECT_EQ(editor.CancelButton.caption, desktop.LoadText(language + 1068));
    EXPECT_EQ(editor.Combo5[4].entries[0], desktop.LoadText(language + 1274) + u"(0)");
    EXPECT_EQ(editor.Combo1[0].entries[1], desktop.LoadText(language + 1273) + u"(1)");
  }
}

TEST_F(FuseEditor, LoadsAnotherDeviceAndStoresOnlyThePageThatItShows) {
  edit_figmpu40& editor = Open(4, 14);
  EXPECT_EQ(editor.form().controls.front(), &editor.Frame1);
  editor.Combo1[6].Choose(1);
  editor.Open(shared_);
  EXPECT_EQ(editor.Combo1[6].chosen, 1) << "chosen for this device";
  vars.quorinwoption[0] = 4;
  vars.quorinibuffer[kLow] = 0x1A;
  editor.Open(shared_);
  EXPECT_TRUE(editor.Combo1[7].visible && editor.Combo4[3].visible && editor.Text1.visible);
  EXPECT_EQ(editor.Combo1[6].chosen, 0);
  vars.quorinibuffer[kLow] = 0x80;
  editor.Open(shared_);
  EXPECT_EQ(editor.Combo1[7].chosen, 1) << "nothing was changed";

  const auto before = buffer();
  vars.quorinprgmode[0] = 8;
  editor.OKButton.Click();
  EXPECT_EQ(Changed(before), "");
  EXPECT_FALSE(editor.form().loaded);
}

TEST_F(FuseEditor, KeepsWhatCannotBeStored) {
  edit_figmpu40& editor = Open(4, 4);
  editor.Combo1[0].Choose(1);
  std::u16string said;
  desktop.on_box = [&](int, std::u16string_view, std::u16string_view prompt) {
    said += prompt.substr(0, 13);
    return 1;
  };
  vars.ReleaseDataBuffers();
  vars.quorinLanguage[0] = 12000;
  editor.OKButton.Click();
  EXPECT_TRUE(editor.form().loaded);
  vars.quorinLanguage[0] = 5;  // of no language
  vars.quorinwoption[0] = 5;
  EXPECT_FALSE(editor.OpenForUser(shared_));
  EXPECT_THROW(editor.Open(shared_), RangeError);
  EXPECT_EQ(said, u"Bufor danych The data buff");
  EXPECT_EQ(editor.Combo1[0].chosen, 1);

  vars.OpenDataBuffers(vars.DataBufferLength(), [] { FAIL(); });
  editor.OKButton.Click();
  EXPECT_FALSE(editor.form().loaded);
  EXPECT_EQ(vars.quorinibuffer[kLow], 0x01);
}

}  // namespace
}  // namespace fliglaf
