// What the command line asks of the terminal and of the signals that end a program.
#pragma once

namespace fliglaf::platform {

enum class Stream { kInput, kOutput, kError };

/// True when a person sits at the other end of the stream.
[[nodiscard]] bool IsTerminal(Stream stream);

/// From here on an interrupt (Ctrl-C), a termination request and a closed terminal do not end the
/// process but are remembered, and writing to a closed pipe is an error instead of the end.
void CatchStopSignals();

/// True once one of them has come.
[[nodiscard]] bool StopRequested();

}  // namespace fliglaf::platform
