#include "images/whole_file.h"

#include <csignal>
#include <cstdio>
#include <sys/resource.h>

#include "tests/images/folder_test.h"

namespace fliglaf {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::vector<std::uint8_t> kNew{'n', 'e', 'w'};

using WholeFile = test::FolderTest;

TEST_F(WholeFile, ReplacesContentAndKeepsTheRest) {
  const fs::path file = Write("file", "old content");
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
  const fs::perms before = fs::status(file).permissions();
  fs::create_symlink("file", File("link"));
  fs::create_symlink("to come", File("ahead"));
  fs::create_symlink("ahead", File("link to ahead"));

  CheckWritable(File("link"));
  EXPECT_EQ(Content(file), "old content");
  WriteFileWhole(File("link"), kNew);
  EXPECT_EQ(ReadFileWhole(file), kNew);
  EXPECT_EQ(fs::status(file).permissions(), before);

  CheckWritable(File("link to ahead"));
  WriteFileWhole(File("link to ahead"), kNew);
  EXPECT_EQ(Content(File("to come")), "new");
  EXPECT_TRUE(fs::is_symlink(File("link")) && fs::is_symlink(File("ahead")));
  EXPECT_THAT(Names(), ElementsAre("ahead", "file", "link", "link to ahead", "to come"));
}

TEST_F(WholeFile, LeavesTheOldContentWhenWritingFails) {
  const fs::path file = Write("file", "old");
  rlimit before{};  // a limit to the size of files fails like a full disk, in the midst of writing
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit limit{50'000, before.rlim_max};
  std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &limit);
  const std::string error =
      test::ErrorOf([&] { WriteFileWhole(file, std::vector<std::uint8_t>(100'000)); });
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_THAT(error, StartsWith(file.string() + ": cannot be written whole: "));
  EXPECT_EQ(Content(file), "old");
  EXPECT_THAT(Names(), ElementsAre("file"));
}

TEST_F(WholeFile, WrittenInPiecesAppearsWhenItIsKept) {
  const fs::path file = Write("file", "old");
  {
    WholeFileWriter broken_off(file);
    broken_off.Write(kNew);
  }
  EXPECT_THAT(Names(), ElementsAre("file"));
  WholeFileWriter writer(file);
  writer.Write(kNew);
  writer.Write(kNew);
  EXPECT_EQ(Content(file), "old");
  writer.Keep();
  EXPECT_EQ(Content(file), "newnew");
  EXPECT_THAT(Names(), ElementsAre("file"));

  WholeFileWriter full("/dev/full");
  full.Write(std::vector<std::uint8_t>(100'000));
  full.Write(kNew);
  EXPECT_THAT(test::ErrorOf([&] { full.Keep(); }), HasSubstr("No space left"));
}

TEST_F(WholeFile, TellsBeforeWhatCannotBeWritten) {
  Write("file", "old");
  fs::create_directory(File("folder"));
  fs::create_symlink("loop", File("loop"));
  const std::pair<fs::path, const char*> refused[] = {
      {"", "the file name is empty"},
      {File("missing") / "a.hex", "there is no folder"},
      {File("folder"), "is a folder"},
      {File("new") / "", "ends like the name of a folder"},
      {File("loop"), "cannot be reached"},
      {"/proc/fliglaf.hex", "no file can be made in /proc"},
      {File(std::string(300, 'a')), "cannot be reached"},
  };
  for (const auto& [path, message] : refused) {
    EXPECT_THAT(test::ErrorOf([&] { CheckWritable(path); }), HasSubstr(message));
    EXPECT_THAT(test::ErrorOf([&] { WriteFileWhole(path, kNew); }), HasSubstr(message));
  }
  CheckWritable(File("file"));
  CheckWritable(File("new"));
  CheckWritable(File(std::string(255, 'a')));
  EXPECT_EQ(Content(File("file")), "old");
  EXPECT_THAT(Names(), ElementsAre("file", "folder", "loop"));
}

TEST_F(WholeFile, DoesNotReplaceAWriteProtectedFile) {
  const fs::path file = Write("file", "old");
  fs::permissions(file, fs::perms::owner_read);
  if (std::ofstream(file, std::ios::app)) GTEST_SKIP() << "this user may write every file";
  EXPECT_THAT(test::ErrorOf([&] { CheckWritable(file); }), HasSubstr("Permission denied"));
  EXPECT_THAT(test::ErrorOf([&] { WriteFileWhole(file, kNew); }), HasSubstr("Permission denied"));
  EXPECT_EQ(Content(file), "old");
}

TEST_F(WholeFile, WritesStreamsStraight) {
  const fs::path file = Write("file", "old ");
  std::FILE* open = std::fopen(file.c_str(), "a");
  const fs::path stream = "/proc/self/fd/" + std::to_string(fileno(open));
  CheckWritable(stream);
  WriteFileWhole(stream, kNew);
  std::fputs(" more", open);
  std::fclose(open);
  EXPECT_EQ(Content(file), "old new more");
  EXPECT_THAT(test::ErrorOf([] { WriteFileWhole("/dev/full", kNew); }),
              HasSubstr("cannot be written whole: No space left"));
}

TEST_F(WholeFile, ReadsOnlyWhatIsAFileOfUsualSize) {
  const auto error_of = [](const fs::path& path) {
    return test::ErrorOf([&] { (void)ReadFileWhole(path); });
  };
  EXPECT_THAT(error_of(File("none")), HasSubstr("there is no such file"));
  EXPECT_THAT(error_of(File("")), HasSubstr("is a folder"));
  EXPECT_THAT(error_of("/dev/zero"), HasSubstr("larger than 64 MiB"));
  fs::resize_file(Write("large", ""), kLargestFile);
  EXPECT_EQ(ReadFileWhole(File("large")).size(), kLargestFile);
}

}  // namespace
}  // namespace fliglaf
