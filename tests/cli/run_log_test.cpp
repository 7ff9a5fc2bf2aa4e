#include "cli/run_log.h"

#include <gtest/gtest.h>

#include "shared/utf8.h"

namespace fliglaf::cli {
namespace {

TEST(RunLog, TellsTimeDifferencesAndFailureApart) {
  const RunLog listing = ReadRunLog(
      "h1\nh2\n>> 000001A7H  02        000001A7H  03H\n>> 000001A8H  02        000001A8H  03H\n"
      ">>Compare ok\n>> 0.24Sec\n");
  EXPECT_EQ(listing.differences, 2);
  EXPECT_EQ(listing.seconds, 0.24);
  EXPECT_EQ(listing.failure, "");

  const RunLog broken = ReadRunLog(">><Read>\n>>IoHelper.SetVcc failed: 0x80004005\n");
  EXPECT_EQ(broken.seconds, std::nullopt);
  EXPECT_EQ(broken.failure, "IoHelper.SetVcc failed: 0x80004005");
  EXPECT_EQ(ReadRunLog(">>qdnio.dll is missing\n").failure, "qdnio.dll is missing");

  EXPECT_EQ(CurrentOperation(">><Erase>\n>><Blank Check>\n>>Erase ok\n"), "Blank Check");
  EXPECT_EQ(CurrentOperation(">> 0.24Sec\n"), "");
}

TEST(Utf8, EncodesAllLengthsAndReplacesHalves) {
  EXPECT_EQ(ToUtf8(u"Aé：\U0001F600"), "Aé：\U0001F600");
  EXPECT_EQ(ToUtf8(std::u16string{0xD800, u'x', 0xDC00}), "\uFFFDx\uFFFD");
}

}  // namespace
}  // namespace fliglaf::cli
