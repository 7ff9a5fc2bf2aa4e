// The files that a command names: in two roles, under another process, and when the run is killed,
// stopped or short of space.
#include <csignal>
#include <sys/stat.h>

#include "tests/cli/program_fixture.h"

namespace {

namespace fs = std::filesystem;
using fliglaf::test::ReadText;
using testing::HasSubstr;
using testing::StartsWith;

class NamedFiles : public fliglaf::test::ProgramTest {
 protected:
  /// Files that a killed run may leave behind.
  int Strays() {
    int count = 0;
    for (const auto& entry : fs::directory_iterator(folder_)) {
      count += entry.path().filename().string().starts_with(".fliglaf-") ? 1 : 0;
    }
    return count;
  }
  /// Runs a line of the shell in which $F is the program.
  int RunShell(const std::string& line) {
    return Wait(StartCommand("env F='" FLIGLAF_PROGRAM "' sh -c '" + line + "'"));
  }
  /// Waits until a process catches SIGINT.
  static void AwaitHandler(pid_t process) {
    const fs::path status = "/proc/" + std::to_string(process) + "/status";
    const auto catches = [&] {
      const std::string text = ReadText(status);
      const std::size_t mask = text.find("SigCgt:\t");
      return mask != std::string::npos && (std::stoull(text.substr(mask + 8, 16), nullptr, 16) & 2);
    };
    for (int i = 0; i < 1000 && !catches(); ++i) Sleep(10);
  }
};

TEST_F(NamedFiles, OneFileHasOneRole) {
  fs::create_symlink("random.bin", folder_ / "link.bin");
  fs::create_hard_link(folder_ / "random.bin", folder_ / "hard.bin");
  fs::create_symlink("new.bin", folder_ / "dangling.bin");
  const std::string before = ReadText(folder_ / "random.bin");
  const std::vector<std::vector<std::string>> commands{
      {"program isp-page-16k", "", "--eeprom", "--chip", "--record", "--vcd"},
      {"read isp-page-16k", "-o", "--eeprom", "--image", "--chip", "--record", "--vcd"}};
  for (const auto& words : commands) {
    for (std::size_t i = 1; i < words.size(); ++i) {
      for (std::size_t j = i + 1; j < words.size(); ++j) {
        const char* const other = i % 2 == 0   ? "link.bin"
                                  : j % 2 == 0 ? "./random.bin"
                                               : "hard.bin";
        EXPECT_EQ(Run(words[0] + " " + words[i] + " random.bin " + words[j] + " " + other), 2);
        EXPECT_THAT(err_, HasSubstr("; each needs a file of its own\n")) << words[i] << words[j];
      }
    }
  }
  EXPECT_EQ(Run("read isp-page-16k -o new.bin --record dangling.bin"), 2);
  EXPECT_EQ(RunShell("$F blank isp51-4k --record x >x"), 2);
  EXPECT_EQ(Run("blank isp51-4k --record /dev/null --vcd /dev/null"), 0) << err_;
  EXPECT_EQ(ReadText(folder_ / "random.bin"), before);
  EXPECT_FALSE(fs::exists(folder_ / "new.bin"));
}

TEST_F(NamedFiles, WhatWasDoneAndCouldNotBeWrittenIsStatusFour) {
  ASSERT_EQ(Run("erase isp51-8k --chip c"), 0);
  EXPECT_THAT(err_, StartsWith("fliglaf: c: created, with a new isp51-8k\n"));
  const std::string before = ReadText(folder_ / "c");
  EXPECT_EQ(RunShell("ulimit -f 4; $F program isp51-8k random.bin --chip c"), 4);
  EXPECT_THAT(err_, HasSubstr("fliglaf: c: cannot be written whole: File too large\n"));
  EXPECT_EQ(ReadText(folder_ / "c"), before);
  EXPECT_EQ(Strays(), 0);
  for (const char* const line :
       {"$F program isp51-8k random.bin --chip c --vcd /dev/full",
        "$F program isp51-8k random.bin --chip c --record /dev/full --json",
        "$F program isp51-8k random.bin --chip c >/dev/full",
        "ulimit -f 4; $F read isp51-8k --chip c -o x.bin", "$F devices >/dev/full"}) {
    EXPECT_EQ(RunShell(line), 4) << line << err_;
  }
  EXPECT_FALSE(fs::exists(folder_ / "x.bin"));
  EXPECT_EQ(Run("verify isp51-8k random.bin --chip c"), 0) << "the chip was kept all the same";
  EXPECT_EQ(Run("blank isp51-8k --chip c --record /dev/full"), 1) << "what the device is like wins";
}

TEST_F(NamedFiles, AnOutputNeverGoesIntoAnother) {
  for (const char* const closed : {"<&-", ">&-", "2>&-", "<&- >&- 2>&-"}) {
    EXPECT_EQ(RunShell("$F program isp51-8k random.bin --vcd v --record r " + std::string(closed)),
              0);
    EXPECT_THAT(ReadText(folder_ / "v"), StartsWith("$version"));
    EXPECT_EQ(ReadText(folder_ / "v").find(">>"), std::string::npos);
    EXPECT_EQ(Run("replay r"), 0);
  }
  std::ofstream(folder_ / "n\xFF\x1B[2J.hex") << ":00000001FF\n";
  EXPECT_EQ(RunShell("$F program isp51-8k n*.hex --json; $F program isp51-8k random.bin --record "
                     "n*.hex/x --json"),
            2);
  EXPECT_EQ(err_.find('\x1B'), std::string::npos) << "no terminal obeys a file's name";
}

TEST_F(NamedFiles, AChipFileHasOneUserAtATime) {
  EXPECT_EQ(Run("read isp51-8k -o x.hex --chip c"), 2);
  EXPECT_THAT(err_, HasSubstr("c: no such chip file; commands that change the device make one"));
  const pid_t holder = Start("program isp51-8k random.bin --chip c --real-time");
  AwaitProgress("Program");
  EXPECT_EQ(RunShell("$F erase isp51-8k --chip c"), 2);
  EXPECT_THAT(err_, HasSubstr("c: in use by process " + std::to_string(holder)));
  kill(holder, SIGKILL);
  Wait(holder);
  EXPECT_EQ(Run("blank isp51-8k --chip c"), 0) << err_ << "what the killed run did is not kept";
}

TEST_F(NamedFiles, AStopEndsEveryWait) {
  mkfifo((folder_ / "pipe").c_str(), 0600);
  struct Case {
    const char* arguments;
    const char* progress;  ///< before it
  };
  for (const auto& [arguments, progress] :
       {Case{"program isp51-8k pipe", ""}, Case{"program isp51-8k random.bin --vcd pipe", ""},
        Case{"program isp51-8k random.bin --record pipe --chip c", "Verify 75 %"}}) {
    fs::remove(folder_ / "err");
    const pid_t run = Start(arguments);
    AwaitProgress(progress);
    AwaitHandler(run);
    Sleep(200);
    kill(run, SIGINT);
    EXPECT_EQ(Wait(run), 130) << arguments << err_;
    EXPECT_THAT(err_, HasSubstr("stopped"));
  }
  EXPECT_EQ(Run("verify isp51-8k random.bin --chip c"), 0) << "done before the wait";
}

TEST_F(NamedFiles, AQuestionTakesItsAnswersOnly) {
  const std::string arguments = "blank isp51-8k --fault no-chip";
  EXPECT_EQ(RunAtTerminal(arguments, "x\nignore it\nI\n"), 1);
  EXPECT_THAT(out_, HasSubstr("Blank Check failed")) << "it went on";
  EXPECT_EQ(RunAtTerminal(arguments, "abort\n"), 1);
  EXPECT_THAT(out_, HasSubstr("another signature was read"));
  EXPECT_EQ(RunAtTerminal(arguments, "\x03"), 130) << "Ctrl-C";
}

}  // namespace
