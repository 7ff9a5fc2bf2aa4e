// The program as a user runs it, in a folder of its own.
#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <pty.h>
#include <random>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fliglaf::test {

inline std::string ReadText(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

/// Runs the program, and other commands.
class ProgramTest : public testing::Test {
 protected:
  ProgramTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "fliglaf-test-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    std::mt19937 random(17);
    std::string bytes(8192, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    std::ofstream(folder_ / "random.bin", std::ios::binary) << bytes;
  }
  ~ProgramTest() override { std::filesystem::remove_all(folder_); }

  /// Starts a command in the test's folder, its output going to the files out and err.
  pid_t StartCommand(const std::string& command) {
    const std::string line =
        "cd '" + folder_.string() + "' && exec " + command + " >out 2>err </dev/null";
    const pid_t child = fork();
    if (child == 0) {
      execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
      _exit(127);
    }
    return child;
  }
  /// Starts the program.
  pid_t Start(const std::string& arguments) {
    return StartCommand("'" FLIGLAF_PROGRAM "' " + arguments);
  }
  int Wait(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    out_ = ReadText(folder_ / "out");
    err_ = ReadText(folder_ / "err");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  int Run(const std::string& arguments) { return Wait(Start(arguments)); }
  struct Refusal {
    std::string arguments;
    const char* message;  ///< or a part of it
  };
  /// Expects that the program refuses each of them on standard error, with status 2.
  void ExpectRefused(const std::vector<Refusal>& refusals) {
    for (const auto& [arguments, message] : refusals) {
      EXPECT_EQ(Run(arguments), 2) << arguments;
      EXPECT_THAT(err_, testing::StartsWith("fliglaf: ")) << arguments;
      EXPECT_THAT(err_, testing::HasSubstr(message)) << arguments;
      EXPECT_EQ(out_, "") << arguments;
    }
  }
  static void Sleep(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
  /// Waits until the program has printed `text` as progress.
  void AwaitProgress(const char* text) {
    for (int i = 0; i < 1000 && ReadText(folder_ / "err").find(text) == std::string::npos; ++i) {
      Sleep(10);
    }
  }
  /// Runs the program on a terminal whose user types `typed` at the first question. All that the
  /// terminal shows is then in out_.
  int RunAtTerminal(const std::string& arguments, const std::string& typed,
                    const std::string& environment = "TERM=xterm") {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
      const std::string line = "cd '" + folder_.string() + "' && exec env " + environment +
                               " '" FLIGLAF_PROGRAM "' " + arguments;
      execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
      _exit(127);
    }
    std::string shown;
    char piece[4096];
    bool has_answered = false;
    for (ssize_t n = 0; (n = read(terminal, piece, sizeof(piece))) > 0;) {
      shown.append(piece, static_cast<std::size_t>(n));
      if (has_answered || (!shown.ends_with("? ") && !shown.ends_with("(y/N) "))) continue;
      has_answered = write(terminal, typed.data(), typed.size()) > 0;
    }
    close(terminal);
    const int status = Wait(child);
    out_ = shown;
    return status;
  }

  std::filesystem::path folder_;
  std::string out_;
  std::string err_;
};

}  // namespace fliglaf::test
