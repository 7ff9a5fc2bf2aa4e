#include "platform/form.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/access_keys.h"

namespace fliglaf::platform {
namespace {

TEST(TextBox, TakesKeysAsAUserTypesThem) {
  TextBox box;
  box.longest = 3;
  for (const char16_t character : std::u16string(u"12345")) box.Type(character);
  EXPECT_EQ(box.text, u"123");
  box.selection_start = 1;
  box.selection_length = 1;
  box.Type(u'x');
  EXPECT_EQ(box.text, u"1x3");
  box.Type(u'\b');
  EXPECT_EQ(box.text, u"13");
  box.PressDelete();
  EXPECT_EQ(box.text, u"1");
  box.PressDelete();
  box.Type(u'\r');
  EXPECT_EQ(box.text, u"1");
  box.longest = 0;
  box.takes_return = true;
  box.Type(u'\r');
  EXPECT_EQ(box.text, u"1\r\n");
  box.enabled = false;
  box.Type(u'2');
  EXPECT_EQ(box.text, u"1\r\n");
}

TEST(TextBox, ItsHandlersDiscardAndChangeKeys) {
  TextBox box;
  std::vector<int> released;
  box.on_key_down = [](int& pressed) {
    if (pressed == key::kDelete || pressed == 'Q') pressed = 0;
  };
  box.on_key_press = [](char16_t& character) {
    if (character == u'b') character = u'B';
    if (character == u'c') character = 0;
  };
  box.on_key_up = [&](int pressed) { released.push_back(pressed); };
  for (const char16_t character : std::u16string(u"abcq")) box.Type(character);
  box.selection_start = 0;
  box.PressDelete();
  EXPECT_EQ(box.text, u"aB");
  EXPECT_EQ(released, (std::vector<int>{'A', 'B', 'C', 'Q', key::kDelete}));
}

TEST(AccessKeys, AreDifferentCharactersAsLongAsThereAreAny) {
  EXPECT_THAT(WithAccessKeys({u"SUT0:", u"SUT1:", u"a & b", u"us", u":", u"s"}),
              testing::ElementsAre(u"&SUT0:", u"S&UT1:", u"&a && b", u"us", u":", u"s"));
}

TEST(Form, TellsTheTextBoxThatLosesTheFocus) {
  Form form;
  TextBox box;
  Button button;
  int told = 0;
  box.on_lost_focus = [&] { ++told; };
  form.SetFocus(box);
  form.SetFocus(box);
  EXPECT_EQ(told, 0);
  form.SetFocus(button);
  EXPECT_EQ(told, 1);
}

}  // namespace
}  // namespace fliglaf::platform
