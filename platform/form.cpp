#include "platform/form.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace fliglaf::platform {
namespace {

/// The code of the key that types a character: that of its capital.
int KeyOf(char16_t character) {
  const bool small_letter = character >= u'a' && character <= u'z';
  return small_letter ? character - u'a' + u'A' : character;
}

}  // namespace

bool TextBox::KeyIsTaken(int pressed) const {
  if (on_key_down) on_key_down(pressed);
  return pressed != 0;
}

void TextBox::Replace(std::size_t start, std::size_t length, std::u16string_view by) {
  text.replace(start, length, by);
  selection_start = start + by.size();
  selection_length = 0;
}

void TextBox::Type(char16_t character) {
  if (!enabled) return;
  const int pressed = KeyOf(character);
  if (KeyIsTaken(pressed)) {
    if (on_key_press) on_key_press(character);
    const std::size_t start = std::min(selection_start, text.size());
    const std::size_t selected = std::min(selection_length, text.size() - start);
    if (character == key::kBackspace) {
      const std::size_t before = selected == 0 && start > 0 ? 1 : 0;
      Replace(start - before, selected + before, u"");
    } else if (character == key::kReturn) {
      if (takes_return) Replace(start, selected, u"\r\n");
    } else if (character != 0 && (longest == 0 || text.size() - selected < longest)) {
      Replace(start, selected, {&character, 1});
    }
  }
  if (on_key_up) on_key_up(pressed);
}

void TextBox::PressDelete() {
  if (!enabled) return;
  if (KeyIsTaken(key::kDelete)) {
    const std::size_t start = std::min(selection_start, text.size());
    Replace(start, std::max<std::size_t>(selection_length, 1), u"");
  }
  if (on_key_up) on_key_up(key::kDelete);
}

void Form::SetFocus(Control& control) {
  Control* const before = std::exchange(focus, &control);
  if (before == &control || before == nullptr || before->kind != Control::Kind::kTextBox) return;
  const auto& box = static_cast<const TextBox&>(*before);
  if (box.on_lost_focus) box.on_lost_focus();
}

void Form::Unload() {
  if (!std::exchange(loaded, false)) return;
  focus = nullptr;
  if (view) view->Close();
}

}  // namespace fliglaf::platform
