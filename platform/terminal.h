// What the command line asks of the terminal and of the signals that end a program.
#pragma once

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

/// From here on an interrupt (Ctrl-C), a termination request and a closed terminal do not end the
/// process but are remembered, and writing to a closed pipe is an error instead of the end.
void CatchStopSignals();

/// True once one of them has come.
[[nodiscard]] bool StopRequested();

}  // namespace fliglaf::platform
