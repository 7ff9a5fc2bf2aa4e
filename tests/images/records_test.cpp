// What Intel HEX and S-record text means, and what is said of damaged text.
#include "images/intel_hex.h"
#include "images/s_record.h"
#include "tests/images/folder_test.h"

namespace fliglaf {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Damage {
  std::string text, line, message;
};

/// Expects errors that name the line and have `message` in them.
void ExpectErrors(Image (*parse)(std::string_view, std::string_view),
                  std::initializer_list<Damage> damages) {
  for (const auto& [text, line, message] : damages) {
    SCOPED_TRACE(text);
    const std::string error = test::ErrorOf([&] { (void)parse(text, "a.txt"); });
    EXPECT_THAT(error, StartsWith("a.txt:" + line + ": "));
    EXPECT_THAT(error, HasSubstr(message));
  }
}

TEST(IntelHex, PutsEveryAddressRecordInItsPlace) {
  const Image image = ParseIntelHex(
      ":020000021000EC\n"
      ":04fffe0001020304f5  \r\n"  // beyond the segment: back to its start
      "\r\n"
      ":020000041000EA\n"
      ":04FFFE0001020304F5\t\n"  // beyond 64 KiB: goes on
      ":02000004FFFFFC\n"
      ":03FFFE0005060AEB\n"  // beyond 4 GiB: back to address 0
      ":0400000300003800C1\n"
      ":04000005000000CD2A\n"
      ":00000001FF",
      "a.txt");
  EXPECT_THAT(image.segments,
              ElementsAre(Segment{0, {10}}, Segment{0x10000, {3, 4}}, Segment{0x1FFFE, {1, 2}},
                          Segment{0x1000FFFE, {1, 2, 3, 4}}, Segment{0xFFFFFFFE, {5, 6}}));
}

TEST(IntelHex, NamesTheLineAndTheKindOfDamage) {
  const std::string good = ":0400100001020304E2\n";
  const std::string later = ":0400120003040506D8\n";  // agrees with the good one, unlike the other
  const std::string other = ":040010000102FF04E6\n";
  const std::string end = ":00000001FF\n";
  ExpectErrors(
      ParseIntelHex,
      {{"", "1", "without the end record"},
       {good, "1", "without the end record :00000001FF"},
       {"\n" + good + ":0400100001020304E3\n" + end, "3", "0xE3; it must be 0xE2"},
       {good + ":0400100001020304\n" + end, "2", "announces 4 data bytes but has 3"},
       {good + ":0400100001020304E\n" + end, "2", "17 hexadecimal digits"},
       {later + good + other + end, "3", "0x0012 is 0xFF here but 0x03 in line 2"},
       {other + later + end, "2", "0x0012 is 0x03 here but 0xFF in line 1"},
       {good + ":04001000010G0304E2\n" + end, "2", "'G' in column 13"},
       {good + ":0400100001 20304E2\n" + end, "2", "the byte 0x20 in column 12"},
       {good + ":" + std::string(522, '0') + "\n" + end, "2",
        "261 bytes; it must have at most 260"},
       {good + ":\n" + end, "2", "0 bytes; it must have at least 5"},
       {good + "0400100001020304E2\n" + end, "2", "begin with ':', not \"0400100001020304E2\""},
       {good + ":00000006FA\n" + end, "2", "type is 0x06"},
       {good + ":03000004000000F9\n" + end, "2", "type 0x04 must have 2 data bytes, not 3"},
       {good + end + "\n" + good, "4", "end record is in line 2"},
       {":0400100001020304E2\r" + end, "1", "the byte 0x0D in column 20"},
       {end, "1", "has no data"}});
}

TEST(SRecord, TakesEveryRecord) {
  const std::string data =
      "S00600004844521B\r\n"
      "S107001001020304DE \r\n"
      "\r\n"
      "s2060200000506ec\n"
      "S3060300000007EF\n"
      "S5030003F9\n"
      "S604000003F8";
  // Of a file whose last record is a count nothing is missing.
  for (const char* end : {"", "\nS70500000000FA", "\nS804000000FB\n", "\nS9030000FC\r\n\r\n"}) {
    EXPECT_THAT(ParseSRecord(data + end, "a.txt").segments,
                ElementsAre(Segment{0x10, {1, 2, 3, 4}}, Segment{0x20000, {5, 6}},
                            Segment{0x3000000, {7}}));
  }
}

TEST(SRecord, NamesTheLineAndTheKindOfDamage) {
  const std::string good = "S107001001020304DE\n";
  const std::string end = "S9030000FC\n";
  ExpectErrors(
      ParseSRecord,
      {{good, "1", "without an end record (S7, S8, S9) or a count (S5, S6)"},
       {"S5030000FC\n" + good, "2", "without an end record"},
       {good + "S107001001020305DE\n" + end, "2", "is 0xDE; it must be 0xDD"},
       {good + "S1070010010203DE\n" + end, "2", "announces 7 bytes after its length but has 6"},
       {good + "S10700100102030X\n" + end, "2", "'X' in column 16"},
       {good + "S10200FD\n" + end, "2", "has 3 bytes; it must have at least 4"},
       {good + "S4030000FC\n" + end, "2", "S4 is a reserved record"},
       {good + "S5030002FA\n" + end, "2", "count is 2; it must be 1,"},
       {good + "S904000001FA\n", "2", "must have no data; this one has 1 byte"},
       {good + end + good, "3", "end record is in line 2"},
       {good + "S10500120309DC\n" + end, "2", "0x0013 is 0x09 here but 0x04 in line 1"},
       {end, "1", "has no data"},
       {"S307FFFFFFFF0102F9\n" + end, "1", "go beyond 0xFFFFFFFF"}});
}

}  // namespace
}  // namespace fliglaf
