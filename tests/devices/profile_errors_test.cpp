// Every mistake in a profile file is refused with its line and what would be right.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devices/catalogue/profile_file.h"
#include "devices/profile_error.h"

namespace fliglaf {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Lt;
using ::testing::SizeIs;
using ::testing::StartsWith;

/// A good file; a test changes one of its lines. The lines are numbered from 1.
const std::vector<std::string> kGood = {
    "[defaults]",           "family = 1",        "address_bytes = 1", "page = 256",
    "supply = 500",         "vcc_pins = [40]",   "gnd_pins = [20]",   "pin_count = 40",
    "lock = [8, 9]",        "erase = 11",        "write_time = 42",   "retries = 2",
    "chip = {erase_ms=10}", "[[device]]",        "name = \"part\"",   "description = \"a part\"",
    "size = 4096",          "range = [0, 4095]",
};

/// A good file of a family with words, pages and EEPROM.
const std::vector<std::string> kGoodWords = {
    "[[device]]",     "name = \"part\"",   "description = \"a part\"",
    "family = 13",    "option = 14",       "address_bytes = 2",
    "size = 8720",    "data_size = 512",   "page = 64",
    "supply = 500",   "vcc_pins = [7]",    "gnd_pins = [8]",
    "pin_count = 28", "write_time = 5000", "retries = 1",
};

struct Mistake {
  const char* good;     ///< the line that is changed
  const char* written;  ///< into what
  int line;
  const char* wrong;
  const char* right;
};

std::string Refusal(const Mistake& mistake, const std::vector<std::string>& good = kGood) {
  std::string text;
  for (const std::string& line : good)
    text += (line == mistake.good ? mistake.written : line) + "\n";
  try {
    static_cast<void>(ParseProfiles(text, "my.toml"));
  } catch (const ProfileError& error) {
    return error.what();
  }
  return "the file was taken";
}

TEST(ProfileErrors, AGoodFileIsTaken) {
  EXPECT_EQ(Refusal({"", "", 0, "", ""}), "the file was taken");
  EXPECT_EQ(Refusal({"", "", 0, "", ""}, kGoodWords), "the file was taken");
}

const Mistake kMistakes[] = {
    // What TOML itself refuses.
    {"page = 256", "page = ", 4, "not valid TOML at column", "value"},
    {"[[device]]", "[[[device]]", 14, "not valid TOML at column", ""},
    {"page = 256", "supply = 300", 5, "not valid TOML at column", "supply"},
    {"description = \"a part\"", "description = \"\xFF\"", 16, "not valid TOML at column", "utf-8"},
    {"page = 256", "ö = 1", 4, "not valid TOML at column 1", "saw 'ö'"},
    {"page = 256", "page = \"\"\"\\\nö\"\"\"", 4, "field 'page'", "a whole number"},
    // Names.
    {"page = 256", "pagee = 256", 4, "unknown field 'pagee'", "did you mean 'page'"},
    {"page = 256", "colour = 1", 4, "unknown field 'colour'", "remove it"},
    {"chip = {erase_ms=10}", "chip = {erase_mss=10}", 13, "'chip.erase_mss'", "'chip.erase_ms'"},
    {"chip = {erase_ms=10}", "chip = 10", 13, "field 'chip' must be", "table [chip]"},
    {"page = 256", "\"\\u001B[2J\\n\\u009B\\u202E\" = 1", 4, "field '\uFFFD[2J\uFFFD\uFFFD\uFFFD'",
     "remove it"},
    {"page = 256", "\u202Ea = 1", 4, "not valid TOML at column 1", "saw '\uFFFD'"},
    {"[defaults]", "[default]", 1, "unknown table or field 'default'", "[defaults]"},
    {"[[device]]", "[device]", 14, "unknown table or field 'device'", "[[device]]"},
    {"[[device]]", "", 15, "field 'name' must be in a [[device]]", "not in [defaults]"},
    // Values.
    {"size = 4096", "", 14, "field 'size' is missing", "from 1 to 16777216 (addresses)"},
    {"name = \"part\"", "", 14, "field 'name' is missing", "text in double quotes"},
    {"size = 4096", "size = \"4096\"", 17, "field 'size'", "a whole number"},
    {"size = 4096", "size = 4096.0", 17, "field 'size'", "a whole number"},
    {"vcc_pins = [40]", "vcc_pins = 40", 6, "field 'vcc_pins'", "a list of 1 to 2"},
    {"vcc_pins = [40]", "vcc_pins = [40, \"a\"]", 6, "field 'vcc_pins'", "a list of 1 to 2"},
    {"vcc_pins = [40]", "vcc_pins = [40, 41, 42]", 6, "has 3 entries", "a list of 1 to 2"},
    {"vcc_pins = [40]", "vcc_pins = [296]", 6, "is 296", "from 1 to 255"},
    {"name = \"part\"", "name = 5", 15, "field 'name'", "text in double quotes"},
    {"family = 1", "family = 17", 2, "field 'family' is 17", "from 1 to 16"},
    {"supply = 500", "supply = 5000", 5, "field 'supply' is 5000", "units of 10 mV"},
    // Fields that do not go together.
    {"name = \"part\"", "name = \"my part\"", 15, "field 'name'", "letters, digits"},
    {"description = \"a part\"", "description = \"\\u202E\"", 16, "'description'", "one line"},
    {"range = [0, 4095]", "range = [0, 4096]", 18, "field 'range'", "below 'size'"},
    {"range = [0, 4095]", "range = [9, 8]", 18, "field 'range'", "in this order"},
    {"range = [0, 4095]", "data_size = 4096", 18, "field 'data_size'", "less than 'size'"},
    {"range = [0, 4095]", "image_bytes = 4095", 18, "field 'image_bytes'", "less than 'size'"},
    {"range = [0, 4095]", "erased = 1", 18, "field 'erased'", "0xFF or 0x00"},
    {"range = [0, 4095]", "vpp_pins = [31]", 18, "field 'vpp_pins'", "'programming_voltage'"},
    {"gnd_pins = [20]", "gnd_pins = [40]", 6, "named twice", "one role"},
    {"range = [0, 4095]", "vpp_pins = [20]\nprogramming_voltage = 1200", 6, "named twice",
     "one role"},
    {"erase = 11", "erase = 8", 10, "named twice", "does one thing"},
    {"page = 256", "page = 128", 4, "field 'page'", "256 in family 1"},
    {"size = 4096", "size = 4100", 17, "field 'size'", "a multiple of 256"},
    {"address_bytes = 1", "address_bytes = 2", 14, "field 'image_bytes'", "'address_bytes' 1"},
    {"address_bytes = 1", "address_bytes = 2\nimage_bytes = 4096", 4, "field 'image_bytes'",
     "'address_bytes' 1"},
    {"family = 1", "family = 2", 14, "field 'data_size'", "1 to 2048"},
};

/// What would drive a page write, a read or the programming enable beyond what it can do.
const Mistake kMistakesInWords[] = {
    {"size = 8720", "size = 8784", 7, "field 'size'", "one transfer"},
    {"size = 8720", "size = 528", 7, "field 'size'", "16 in families 13 and 14"},
    {"size = 8720", "size = 8719", 9, "field 'page'", "whole pages"},
    {"page = 64", "page = 48", 9, "field 'page'", "1, 2, 4"},
    {"page = 64", "page = 0", 9, "field 'page'", "1, 2, 4"},
    {"option = 14", "option = 13", 5, "field 'option'", "14 or 15"},
    {"retries = 1", "retries = 0", 15, "field 'retries'", "1 or more"},
    {"address_bytes = 2", "address_bytes = 1", 1, "field 'image_bytes'", "twice 'size'"},
    {"family = 13", "family = 15", 1, "field 'image_bytes'", "'address_bytes' 1"},
    {"family = 13", "family = 3", 8, "field 'data_size'", "even number from 2 to 64"},
    {"family = 13", "family = 2", 7, "field 'size'", "up to 8192"},
};

void ExpectRefusal(const Mistake& mistake, const std::vector<std::string>& good) {
  EXPECT_THAT(Refusal(mistake, good),
              AllOf(StartsWith("my.toml:" + std::to_string(mistake.line) + ": "),
                    HasSubstr(mistake.wrong), HasSubstr(mistake.right)))
      << mistake.written;
}

TEST(ProfileErrors, NameTheLineTheMistakeAndWhatIsRight) {
  for (const Mistake& mistake : kMistakes) ExpectRefusal(mistake, kGood);
  for (const Mistake& mistake : kMistakesInWords) ExpectRefusal(mistake, kGoodWords);
}

TEST(ProfileErrors, OfALongPieceOfTheFileAreShort) {
  const std::string name(300'000, 'a');
  std::string dots = "a";
  for (int i = 0; i < 300'000; ++i) dots += ".a";
  for (const std::string& line : {name, name + " = 1", dots + " = 1"}) {
    EXPECT_THAT(Refusal({"page = 256", line.c_str(), 4, "", ""}),
                AllOf(StartsWith("my.toml:4: "), SizeIs(Lt(300))));
  }
}

TEST(ProfileErrors, AFileWithoutDevicesIsRefused) {
  EXPECT_THROW(static_cast<void>(ParseProfiles("", "my.toml")), ProfileError);
  EXPECT_THROW(static_cast<void>(ParseProfiles("device = []", "my.toml")), ProfileError);
}

}  // namespace
}  // namespace fliglaf
