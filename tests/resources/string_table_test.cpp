#include "resources/string_table.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iconv.h>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace fliglaf::resources {
namespace {

constexpr int kNumbers[] = {
#define TEXT(number, ...) number,
#include "resources/texts.inc"
#undef TEXT
};

struct Translation {
  std::int64_t base;
  const char* charset;  // of that language's Windows, in which its texts must be writable
  std::u16string_view cancel;
};
constexpr Translation kTranslations[] = {
    {kChineseSimplified, "GB2312", u"取消"},
    {kChineseTraditional, "BIG5", u"取消"},
    {kKorean, "EUC-KR", u"취소"},
    {kPolish, "CP1250", u"Anuluj"},
    {kItalian, "CP1252", u"Annulla"},
    {kDutch, "CP1252", u"Annuleren"},
};
constexpr int kCancel = 1068;

bool IsWritable(std::u16string_view text, const char* charset) {
  std::u16string rest(text);
  std::erase(rest, u'：');  // not in every code page
  const iconv_t converter = iconv_open(charset, "UTF-16LE");
  if (converter == iconv_t(-1)) return false;
  char* in = reinterpret_cast<char*>(rest.data());
  std::size_t in_left = rest.size() * sizeof(char16_t);
  std::string written(4 * rest.size(), '\0');
  char* out = written.data();
  std::size_t out_left = written.size();
  const bool writable = iconv(converter, &in, &in_left, &out, &out_left) == 0;
  iconv_close(converter);
  return writable;
}

/// What stands before the words: blanks, ">>", or the mark of the hexadecimal number before.
std::u16string_view Head(std::u16string_view text) {
  return text.starts_with(u"H  ") ? u"H  " : text.substr(0, text.find_first_not_of(u" >"));
}

std::u16string_view Tail(std::u16string_view text) {
  return text.substr(text.find_last_not_of(u" :!：") + 1);
}

std::size_t Columns(std::u16string_view text) {
  const auto wide = std::ranges::count_if(text, [](char16_t c) { return c >= 0x1100; });
  return text.size() + static_cast<std::size_t>(wide);
}

std::size_t SecondHeadingColumn(std::u16string_view heading) {
  return Columns(heading.substr(0, heading.rfind(u' ') + 1));
}

TEST(StringTable, EveryBlockHasEveryTextInItsOwnLanguage) {
  for (const int number : kNumbers) {
    EXPECT_FALSE(FindText(kEnglish + number).empty()) << number;
    EXPECT_EQ(FindText(kEnglishSecondCopy + number), FindText(kEnglish + number));
  }
  for (const auto& [base, charset, cancel] : kTranslations) {
    EXPECT_EQ(FindText(base + kCancel), cancel);
    for (const int number : kNumbers) {
      EXPECT_FALSE(FindText(base + number).empty()) << base << " + " << number;
      EXPECT_TRUE(IsWritable(FindText(base + number), charset))
          << base << " + " << number << " in " << charset;
    }
  }
}

TEST(StringTable, NumbersOutsideTheTableGiveTheEmptyText) {
  using Limits = std::numeric_limits<std::int64_t>;
  for (const std::int64_t number :
       {std::int64_t{-1}, kCancel - kBlockSize, kDutch + kCancel + 1, kDutch + kBlockSize + kCancel,
        (std::int64_t{1} << 32) + kCancel, Limits::min(), Limits::max()}) {
    EXPECT_TRUE(FindText(number).empty()) << number;
  }
}

// The code puts texts, numbers and texts side by side, the labels of the memory map in a column.
TEST(StringTable, TranslationsJoinLikeTheEnglishTexts) {
  for (const auto& translation : kTranslations) {
    for (const int number : kNumbers) {
      SCOPED_TRACE(testing::Message() << translation.base << " + " << number);
      const std::u16string_view english = FindText(kEnglish + number);
      const std::u16string_view translated = FindText(translation.base + number);
      if (number >= text::kProgramMemory && number <= text::kConfigWord) {
        EXPECT_EQ(Columns(translated), Columns(english));
      } else {
        EXPECT_EQ(Head(translated), Head(english));
      }
      EXPECT_EQ(Tail(translated), Tail(english));
    }
    EXPECT_EQ(SecondHeadingColumn(FindText(translation.base + text::kDeviceAndBuffer)),
              SecondHeadingColumn(FindText(kEnglish + text::kDeviceAndBuffer)));
  }
}

}  // namespace
}  // namespace fliglaf::resources
