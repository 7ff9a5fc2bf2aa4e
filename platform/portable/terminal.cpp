#include "platform/terminal.h"

#include <csignal>
#include <signal.h>
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

}  // namespace

Utf8Console::Utf8Console() = default;

Utf8Arguments::Utf8Arguments(int argc, const char* const* argv) : values_(argv, argv + argc) {}

bool IsTerminal(Stream stream) {
  switch (stream) {
    case Stream::kInput:
      return isatty(STDIN_FILENO) != 0;
    case Stream::kOutput:
      return isatty(STDOUT_FILENO) != 0;
    default:
      return isatty(STDERR_FILENO) != 0;
  }
}

void CatchStopSignals() {
  OnSignal(SIGINT, RequestStop);
  OnSignal(SIGTERM, RequestStop);
  OnSignal(SIGHUP, RequestStop);
  OnSignal(SIGPIPE, SIG_IGN);
}

bool StopRequested() { return stop_requested != 0; }

}  // namespace fliglaf::platform
