// What the command line asks of the terminal and of the signals that end a program.
#pragma once

#include <exception>
#include <functional>
#include <string>
#include <vector>

namespace fliglaf::platform {

/// While it lives, what the program prints to a console is taken as UTF-8, and cursor movements
/// work.
class Utf8Console {
 public:
  Utf8Console();
  ~Utf8Console() {
    if (restore_) restore_();
  }
  Utf8Console(const Utf8Console&) = delete;
  Utf8Console& operator=(const Utf8Console&) = delete;

 private:
  std::function<void()> restore_;
};

/// The arguments of the program, in UTF-8 however the system hands them over.
class Utf8Arguments {
 public:
  Utf8Arguments(int argc, const char* const* argv);
  Utf8Arguments(const Utf8Arguments&) = delete;
  Utf8Arguments& operator=(const Utf8Arguments&) = delete;

  [[nodiscard]] int count() const { return static_cast<int>(values_.size()); }
  [[nodiscard]] const char* const* values() const { return values_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<const char*> values_;
};

enum class Stream { kInput, kOutput, kError };

/// True when a person sits at the other end of the stream.
[[nodiscard]] bool IsTerminal(Stream stream);

/// Columns of the terminal that the output stream goes to; 0 when it is none, or does not say.
[[nodiscard]] int TerminalColumns(Stream stream);

/// Reads a line of standard input, without its end. False at the end of the input and when
/// StopRequested() while it waits; CatchStopSignals has been called before.
[[nodiscard]] bool ReadLine(std::string& line);

/// Opens those of the streams 0, 1 and 2 that the caller of the program left closed on the null
/// device. Otherwise the next file of ours would get the number, and what is printed would go into
/// it. Call it before any file is opened.
void OpenStandardStreams();

/// From here on an interrupt (Ctrl-C), a termination request and a closed terminal do not end the
/// process but are remembered; those that the caller of the program had ignored stay ignored.
/// Writing to a closed pipe, or beyond the largest file allowed, is an error instead of the end.
/// Calling it again changes nothing.
void CatchStopSignals();

/// True once one of them has come.
[[nodiscard]] bool StopRequested();

/// The user stopped the program while it waited, for example for the other end of a pipe.
class Stopped : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "stopped"; }
};

}  // namespace fliglaf::platform
