// Image files as a whole: formats, round trips, and what other tools make of them.
#include <cstdlib>
#include <map>

#include "images/intel_hex.h"
#include "images/s_record.h"
#include "tests/images/folder_test.h"

namespace fliglaf {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using ImageFile = test::FolderTest;

constexpr std::uint32_t kHighest[] = {0xFFFF, 0xFF'FFFF, 0xFFFF'FFFF, 0x1'0000, 0x100'0000};

/// Up to five segments that begin below 64 KiB borders, and the byte at the highest address.
Image RandomSparseImage(std::mt19937& random, std::uint32_t highest) {
  std::map<std::uint32_t, std::uint8_t> cells{{highest, std::uint8_t{1}}};
  for (auto segments = random() % 6; segments > 0; --segments) {
    std::uint64_t address = std::min<std::uint64_t>(highest, (random() & 0xFFFF) << 16);
    address -= std::min<std::uint64_t>(address, random() % 150);
    for (auto size = 1 + random() % 300; size > 0 && address <= highest; --size) {
      cells[static_cast<std::uint32_t>(address++)] = static_cast<std::uint8_t>(random());
    }
  }
  Image image;
  for (const auto& [address, value] : cells) {
    if (image.segments.empty() || image.end() != address) image.segments.push_back({address, {}});
    image.segments.back().bytes.push_back(value);
  }
  return image;
}

TEST_F(ImageFile, AgreesWithSrecCat) {
  if (std::system("srec_cat --version > /dev/null 2>&1") != 0) {
    GTEST_SKIP() << "srec_cat is not installed";
  }
  std::mt19937 random(21);
  for (int i = 0; i < 10; ++i) {
    SCOPED_TRACE(i);
    const Image image = RandomSparseImage(random, kHighest[i % 5]);
    Write("a.hex", EncodeIntelHex(image));
    Write("a.s19", EncodeSRecord(image));
    const std::string there = "cd " + File("").string() + " && srec_cat ";
    ASSERT_EQ(std::system((there + "a.hex -intel -o b.s19 -motorola").c_str()), 0);
    EXPECT_EQ(ReadImage(File("b.s19")), image);
    ASSERT_EQ(std::system((there + "a.s19 -motorola -o b.hex -intel").c_str()), 0);
    EXPECT_EQ(ReadImage(File("b.hex")), image);
  }
}

// An image comes back as it was written. Whatever happens to the text then, it gives an image or an
// error, and an image only when no byte of it has changed. The digit of an S-record is spared, as
// its checksum does not cover it.
TEST_F(ImageFile, ComesBackOrGivesAnError) {
  std::mt19937 random(22);
  int errors = 0;
  for (int i = 0; i < 1200; ++i) {
    const Image image = RandomSparseImage(random, kHighest[i % 5]);
    std::string text = i % 2 == 0 ? EncodeIntelHex(image) : EncodeSRecord(image);
    const auto parse = i % 2 == 0 ? ParseIntelHex : ParseSRecord;
    ASSERT_EQ(parse(text, "a"), image) << text;
    std::size_t place = random() % text.size();
    if (place > 0 && text[place - 1] == 'S') --place;
    if (i % 3 == 0) text.resize(place);
    if (i % 3 == 1) text.erase(place, 1 + random() % 3);
    if (i % 3 == 2) text[place] = static_cast<char>(random());
    try {
      ASSERT_EQ(parse(text, "a"), image) << text;
    } catch (const ImageError&) {
      ++errors;
    }
  }
  EXPECT_GT(errors, 1000);
}

TEST_F(ImageFile, FindsTheFormatInTheContentThenInTheEnding) {
  const std::string hex = ":0100000001FE\n:00000001FF\n";
  const Image one{{Segment{0, {1}}}};
  EXPECT_EQ(ReadImage(Write("misnamed.s19", hex)), one);
  EXPECT_EQ(ReadImage(Write("lower", "\r\ns104000001fa\ns9030000fc\n")), one);
  EXPECT_EQ(ReadImage(Write("marked", "\xEF\xBB\xBF" + hex)), one);
  EXPECT_EQ(ReadImage(Write("hex.BIN", hex)).end(), hex.size());
  EXPECT_EQ(ReadImage(Write("elf.bin", "\177ELF")).end(), 4U);
  const auto error_of = [this](const std::string& name, const std::string& content) {
    return test::ErrorOf([&] { (void)ReadImage(Write(name, content)); });
  };
  // Damage in line 1 is a damaged record, not a file of another kind.
  EXPECT_THAT(error_of("cut", "100000001FE\n" + hex), StartsWith(File("cut").string() + ":1: "));
  EXPECT_THAT(error_of("text.srec", "Sorry\n"),
              EndsWith("text.srec:1: a line of an S-record file must begin with S and a digit, not "
                       "\"Sorry\""));
  EXPECT_THAT(error_of("note.txt", "Sorry\n"), HasSubstr("none of the endings .hex "));
  EXPECT_THAT(error_of("empty.bin", ""), HasSubstr("is empty"));
  EXPECT_THAT(error_of("x.hex", "\177ELF\n" + hex), EndsWith("x.hex: an ELF program; convert it "
                                                             "with objcopy -O ihex"));
  EXPECT_THAT(error_of("x.hex.gz", "\x1F\x8B\b"), HasSubstr("compressed with gzip"));
}

TEST_F(ImageFile, WritesWhatIsAskedForAndNothingElse) {
  const std::vector<std::uint8_t> bytes{0x3A, 0x0D, 0x0A};  // begins like Intel HEX
  for (const char* name : {"a.hex", "a.mot", "a.bin"}) {
    const auto format = FormatOfName(name).value();
    WriteImage(File(name), format, bytes, 0xFFFFFFFD);
    const std::uint32_t address = format == ImageFormat::kBinary ? 0 : 0xFFFFFFFD;
    EXPECT_EQ(ReadImage(File(name)), (Image{{Segment{address, bytes}}}));
  }
  const auto beyond = [&] { WriteImage(File("b"), ImageFormat::kIntelHex, bytes, 0xFFFFFFFE); };
  EXPECT_THAT(test::ErrorOf(beyond), HasSubstr("3 bytes from address 0xFFFFFFFE go beyond"));
  EXPECT_EQ(Names().size(), 3U);
}

}  // namespace
}  // namespace fliglaf
