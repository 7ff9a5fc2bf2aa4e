#include "platform/terminal.h"

#include <windows.h>

#include <atomic>

namespace fliglaf::platform {
namespace {

/// Set on the thread that Windows makes for the handler.
std::atomic<bool> stop_requested = false;

BOOL WINAPI OnConsoleEvent(DWORD /*event*/) {
  stop_requested = true;
  return TRUE;
}

DWORD NumberOf(Stream stream) {
  switch (stream) {
    case Stream::kInput:
      return STD_INPUT_HANDLE;
    case Stream::kOutput:
      return STD_OUTPUT_HANDLE;
    default:
      return STD_ERROR_HANDLE;
  }
}

}  // namespace

bool IsTerminal(Stream stream) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(NumberOf(stream)), &mode) != FALSE;
}

void CatchStopSignals() { SetConsoleCtrlHandler(OnConsoleEvent, TRUE); }

bool StopRequested() { return stop_requested; }

}  // namespace fliglaf::platform
