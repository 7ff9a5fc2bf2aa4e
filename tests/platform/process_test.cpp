// What other processes and the system do to this one: locks, signals, closed streams, pipes whose
// other end is missing.
#include <csignal>
#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/file_lock.h"
#include "platform/terminal.h"
#include "tests/images/folder_test.h"

namespace fliglaf::platform {
namespace {

using Process = test::FolderTest;

const std::vector<std::uint8_t> kNew{'n', 'e', 'w'};

/// The exit status of a child process that does `work`, of which it is the result.
int InChild(auto work, int signal = 0) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  if (signal != 0) {
    usleep(100'000);
    kill(child, signal);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// While one process replaces the file again and again, no two have it at a time.
TEST_F(Process, LocksTheFileThatHasTheName) {
  const auto file = Write("file", "");
  const auto count_up = [&file] {
    for (int done = 0; done < 50;) {
      try {
        FileLock lock(file);
        auto content = ReadFileWhole(file);
        content.push_back('x');
        WriteFileWhole(file, content, &lock);
        ++done;
      } catch (const FileInUse&) {
      }
    }
    return 0;
  };
  auto other = std::async(std::launch::async, [&] { return InChild(count_up); });
  EXPECT_EQ(InChild(count_up), 0);
  EXPECT_EQ(other.get(), 0);
  EXPECT_EQ(Content(file).size(), 100U);
}

TEST_F(Process, StopsWhileItWaitsForAPipe) {
  const auto pipe = File("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  CatchStopSignals();  // for the children too, which the signal may reach at once
  CatchStopSignals();
  const auto stopped = [](auto wait) {
    return InChild(
        [&] {
          try {
            wait();
          } catch (const Stopped&) {
            return 7;
          }
          return 0;
        },
        SIGTERM);
  };
  EXPECT_EQ(stopped([&] { (void)ReadFileWhole(pipe); }), 7);
  EXPECT_EQ(stopped([&] { WriteFileWhole(pipe, kNew); }), 7);
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);  // that never reads
  EXPECT_EQ(stopped([&] { WriteFileWhole(pipe, std::vector<std::uint8_t>(1'000'000)); }), 7);
  close(reader);

  // With both ends there all bytes arrive, also when the writer is slow to come.
  auto read = std::async(std::launch::async, [&] { return ReadFileWhole(pipe); });
  usleep(100'000);
  const std::vector<std::uint8_t> large(1'000'000, 'x');
  WriteFileWhole(pipe, large);
  EXPECT_EQ(read.get(), large);
}

TEST_F(Process, LeavesIgnoredSignalsIgnored) {
  const auto ends_with = [](int ignored) {
    return InChild([&] {
      std::signal(ignored, SIG_IGN);
      CatchStopSignals();
      std::raise(SIGHUP);
      std::raise(SIGPIPE);
      std::raise(SIGXFSZ);
      return StopRequested() ? 1 : 0;
    });
  };
  EXPECT_EQ(ends_with(SIGHUP), 0);
  EXPECT_EQ(ends_with(SIGINT), 1);
}

}  // namespace
}  // namespace fliglaf::platform
