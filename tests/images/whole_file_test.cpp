#include "images/whole_file.h"

#include <csignal>
#include <cstdio>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "tests/images/folder_test.h"

namespace fliglaf {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::vector<std::uint8_t> kNew{'n', 'e', 'w'};

using WholeFile = test::FolderTest;

/// A user who may not do everything; root may become one.
class OrdinaryUser {
 public:
  OrdinaryUser() { EXPECT_TRUE(!was_root_ || seteuid(65'534) == 0); }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;
  ~OrdinaryUser() { EXPECT_TRUE(!was_root_ || seteuid(0) == 0); }

 private:
  bool was_root_ = geteuid() == 0;
};

/// A child process that does `work`, whose result is its exit status.
pid_t Fork(auto work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  return child;
}

int StatusOf(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

TEST_F(WholeFile, ReplacesContentAndKeepsTheRest) {
  const fs::path file = Write("file", "old content");
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
  const fs::perms before = fs::status(file).permissions();
  const bool has_attribute = setxattr(file.c_str(), "user.note", "kept", 4, 0) == 0;
  const bool is_root = geteuid() == 0;
  ASSERT_TRUE(!is_root || chown(file.c_str(), 65'534, 65'533) == 0);
  fs::create_symlink("file", File("link"));
  fs::create_symlink("to come", File("ahead"));
  fs::create_symlink("ahead", File("link to ahead"));

  CheckWritable(File("link"));
  EXPECT_EQ(Content(file), "old content");
  WriteFileWhole(File("link"), kNew);
  EXPECT_EQ(ReadFileWhole(file), kNew);
  EXPECT_EQ(fs::status(file).permissions(), before);
  std::string note(4, ' ');
  if (has_attribute) getxattr(file.c_str(), "user.note", note.data(), note.size());
  EXPECT_EQ(note, has_attribute ? "kept" : note);
  struct stat state = {};
  stat(file.c_str(), &state);
  EXPECT_TRUE(!is_root || (state.st_uid == 65'534 && state.st_gid == 65'533));

  CheckWritable(File("link to ahead"));
  const mode_t mask = umask(027);
  WriteFileWhole(File("link to ahead"), kNew);
  umask(mask);
  EXPECT_EQ(Content(File("to come")), "new");
  EXPECT_EQ(static_cast<int>(fs::status(File("to come")).permissions()), 0640);
  EXPECT_TRUE(fs::is_symlink(File("link")) && fs::is_symlink(File("ahead")));
  EXPECT_THAT(Names(), ElementsAre("ahead", "file", "link", "link to ahead", "to come"));
}

TEST_F(WholeFile, LeavesTheOldContentWhenWritingFails) {
  const fs::path file = Write("file", "old");
  rlimit before{};  // a limit to the size of files fails like a full disk, in the midst of writing
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit limit{50'000, before.rlim_max};
  std::signal(SIGXFSZ, SIG_DFL);
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
      {"/proc/fliglaf.hex", "cannot create a file in /proc"},
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

TEST_F(WholeFile, DoesNotReplaceWhatIsProtected) {
  const struct {
    mode_t file, folder;
    const char* message;
  } cases[] = {
      {0444, 0777, "cannot be opened for writing: Permission denied"},
      {0666, 0555, "cannot create a file in"},
      {0666, 01777, "only its owner may replace it"},
  };
  for (const auto& [mode, folder_mode, message] : cases) {
    if (folder_mode == 01777 && geteuid() != 0) break;  // the file and the folder are our own
    const fs::path file = Write("file", "old");
    chmod(file.c_str(), mode);
    chmod(File("").c_str(), folder_mode);
    {
      const OrdinaryUser user;
      EXPECT_THAT(test::ErrorOf([&] { CheckWritable(file); }), HasSubstr(message));
      EXPECT_THAT(test::ErrorOf([&] { WriteFileWhole(file, kNew); }), HasSubstr(message));
    }
    chmod(File("").c_str(), 0700);
    EXPECT_EQ(Content(file), "old");
    EXPECT_THAT(Names(), ElementsAre("file"));
    fs::remove(file);
  }
}

TEST_F(WholeFile, RemovesWhatEndedProcessesLeft) {
  const pid_t ended = Fork([] { return 0; });
  StatusOf(ended);
  const auto name = [](pid_t process, const char* rest) {
    return ".fliglaf-" + std::to_string(process) + rest;
  };
  Write(name(ended, "-0123456789abcdef.tmp"), "stale");
  const std::string others = name(ended, "-of-the-user.tmp");
  const std::string living = name(getppid(), "-0123456789abcdef.tmp");
  const std::string elsewhere = name(ended, "-fedcba9876543210.tmp");
  for (const std::string& kept : {others, living, elsewhere}) Write(kept, "kept");
  std::FILE* locked = std::fopen(File(elsewhere).c_str(), "r");
  flock(fileno(locked), LOCK_EX);  // by a process whose number is not seen here

  const WholeFileWriter first(File("first"));
  const WholeFileWriter second(File("second"));
  EXPECT_THAT(Names(), ::testing::IsSupersetOf({others, living, elsewhere}));
  EXPECT_EQ(Names().size(), 5U);
  std::fclose(locked);
  CheckWritable(File("file"));
  EXPECT_EQ(Names().size(), 4U);
}

// Killed at any moment, a writer leaves the old content or the new one, and nothing that the next
// writer does not remove.
TEST_F(WholeFile, OutlivesAKilledWriter) {
  const fs::path file = Write("file", "0");
  int old = 0;
  for (int i = 1; i <= 20; ++i) {
    const std::vector<std::uint8_t> content(3'000'000, static_cast<std::uint8_t>('0' + i));
    const std::string before = Content(file);
    const pid_t writer = Fork([&] { return WriteFileWhole(file, content), 0; });
    usleep(std::random_device{}() % 6000);
    kill(writer, SIGKILL);
    StatusOf(writer);
    const std::string after = Content(file);
    if (after == before) ++old;
    ASSERT_TRUE(after == before || after == std::string(content.begin(), content.end()));
  }
  EXPECT_GT(old, 0);
  WriteFileWhole(file, kNew);
  EXPECT_THAT(Names(), ElementsAre("file"));
}

TEST_F(WholeFile, IsCreatedByOneOfSeveralProcesses) {
  for (int i = 0; i < 50; ++i) {
    const fs::path file = File("file");
    const auto create = [&file](char c) {
      return Fork([&file, c] {
        return CreateFileWhole(file, std::vector(1000, static_cast<std::uint8_t>(c))) ? c : 0;
      });
    };
    const pid_t a = create('a');
    const pid_t b = create('b');
    const int winner = WEXITSTATUS(StatusOf(a)) + WEXITSTATUS(StatusOf(b));
    ASSERT_EQ(Content(file), std::string(1000, static_cast<char>(winner)));
    EXPECT_FALSE(CreateFileWhole(file, kNew));
    EXPECT_THAT(Names(), ElementsAre("file"));
    fs::remove(file);
  }
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
  EXPECT_THAT(error_of("/dev/zero"), HasSubstr("must be at most 64 MiB"));
  fs::resize_file(Write("large", ""), kLargestFile);
  EXPECT_EQ(ReadFileWhole(File("large")).size(), kLargestFile);
}

}  // namespace
}  // namespace fliglaf
