#include "platform/access_keys.h"

#include <cstddef>
#include <set>

namespace fliglaf::platform {
namespace {

/// The key that a character stands for, its capital; 0 for one that no keyboard has for sure.
char16_t KeyOf(char16_t character) {
  if (character >= u'a' && character <= u'z') return static_cast<char16_t>(character - u'a' + u'A');
  const bool key =
      (character >= u'A' && character <= u'Z') || (character >= u'0' && character <= u'9');
  return key ? character : u'\0';
}

}  // namespace

std::u16string WithoutAccessKey(std::u16string_view caption) {
  std::u16string text;
  for (const char16_t character : caption) text.append(character == u'&' ? 2 : 1, character);
  return text;
}

std::vector<std::u16string> WithAccessKeys(const std::vector<std::u16string_view>& captions) {
  std::vector<std::u16string> texts;
  std::set<char16_t> taken{u'\0'};
  for (const std::u16string_view caption : captions) {
    std::size_t place = 0;
    while (place < caption.size() && taken.contains(KeyOf(caption[place]))) ++place;
    std::u16string text = WithoutAccessKey(caption.substr(0, place));
    if (place < caption.size()) {
      taken.insert(KeyOf(caption[place]));
      text += u'&';
    }
    texts.push_back(text + WithoutAccessKey(caption.substr(place)));
  }
  return texts;
}

}  // namespace fliglaf::platform
