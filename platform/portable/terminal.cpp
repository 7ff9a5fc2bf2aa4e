#include "platform/terminal.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace fliglaf::platform {
namespace {

volatile std::sig_atomic_t stop_requested = 0;

void RequestStop(int /*signal*/) { stop_requested = 1; }

void OnSignal(int number, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;  // without SA_RESTART: a question at the terminal is broken off
  sigemptyset(&action.sa_mask);
  sigaction(number, &action, nullptr);
}

/// nohup and a shell that starts a program in the background ignore signals on its behalf.
void CatchUnlessIgnored(int number) {
  struct sigaction present = {};
  sigaction(number, nullptr, &present);
  if (present.sa_handler != SIG_IGN) OnSignal(number, RequestStop);
}

int NumberOf(Stream stream) {
  switch (stream) {
    case Stream::kInput:
      return STDIN_FILENO;
    case Stream::kOutput:
      return STDOUT_FILENO;
    default:
      return STDERR_FILENO;
  }
}

}  // namespace

Utf8Console::Utf8Console() = default;

Utf8Arguments::Utf8Arguments(int argc, const char* const* argv) : values_(argv, argv + argc) {}

bool IsTerminal(Stream stream) { return isatty(NumberOf(stream)) != 0; }

int TerminalColumns(Stream stream) {
  winsize size{};
  return ioctl(NumberOf(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool ReadLine(std::string& line) {
  constexpr int kStopCheckMs = 50;  // a signal that comes just ahead of poll() does not end it
  line.clear();
  pollfd input{STDIN_FILENO, POLLIN, 0};
  while (!StopRequested()) {
    if (poll(&input, 1, kStopCheckMs) <= 0) continue;
    char character = 0;
    if (read(STDIN_FILENO, &character, 1) <= 0) return !line.empty() && !StopRequested();
    if (character == '\n') return true;
    line += character;
  }
  return false;
}

void OpenStandardStreams() {
  // open() gives the lowest number that is free, so in ascending order it is the one closed.
  for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(number, F_GETFD) != -1) continue;
    (void)open("/dev/null", number == STDIN_FILENO ? O_RDONLY : O_WRONLY);
  }
}

void CatchStopSignals() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) CatchUnlessIgnored(number);
  OnSignal(SIGPIPE, SIG_IGN);
  OnSignal(SIGXFSZ, SIG_IGN);
}

bool StopRequested() { return stop_requested != 0; }

}  // namespace fliglaf::platform
