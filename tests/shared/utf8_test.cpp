#include "shared/utf8.h"

#include <gtest/gtest.h>

namespace fliglaf {
namespace {

TEST(Utf8, EncodesAllLengthsAndReplacesHalves) {
  EXPECT_EQ(ToUtf8(u"Aé：\U0001F600"), "Aé：\U0001F600");
  EXPECT_EQ(ToUtf8(std::u16string{0xD800, u'x', 0xDC00}), "\uFFFDx\uFFFD");
}

}  // namespace
}  // namespace fliglaf
