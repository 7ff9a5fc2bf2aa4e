#include "platform/terminal.h"

#include <windows.h>

#include <atomic>
#include <filesystem>
#include <iostream>
#include <memory>
#include <shellapi.h>

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

Utf8Console::Utf8Console() {
  const UINT code_page = GetConsoleOutputCP();
  const HANDLE error = GetStdHandle(NumberOf(Stream::kError));
  DWORD mode = 0;
  const bool console = GetConsoleMode(error, &mode) != FALSE;
  SetConsoleOutputCP(CP_UTF8);
  if (console) SetConsoleMode(error, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  restore_ = [=] {
    SetConsoleOutputCP(code_page);
    if (console) SetConsoleMode(error, mode);
  };
}

/// The narrow arguments are in the code page of the system, which has no place for most letters.
Utf8Arguments::Utf8Arguments(int /*argc*/, const char* const* /*argv*/) {
  int count = 0;
  const std::unique_ptr<LPWSTR, decltype(&LocalFree)> wide(
      CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
  for (int i = 0; i < count; ++i) {
    texts_.push_back(std::filesystem::path(wide.get()[i]).string());
  }
  for (const std::string& text : texts_) values_.push_back(text.c_str());
}

bool IsTerminal(Stream stream) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(NumberOf(stream)), &mode) != FALSE;
}

int TerminalColumns(Stream stream) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (GetConsoleScreenBufferInfo(GetStdHandle(NumberOf(stream)), &info) == FALSE) return 0;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

void OpenStandardStreams() {}  // handles have no fixed numbers here

bool ReadLine(std::string& line) {
  return static_cast<bool>(std::getline(std::cin, line)) && !StopRequested();
}

void CatchStopSignals() { SetConsoleCtrlHandler(OnConsoleEvent, TRUE); }

bool StopRequested() { return stop_requested; }

}  // namespace fliglaf::platform
