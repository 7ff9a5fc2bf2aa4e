// The lines of the log and the captions that every operation writes in the same form.
#pragma once

#include <cstdint>

#include "usb/request/engine_run.h"

namespace fliglaf {

/// Announces operation `code`, log line and caption, in a log that is emptied first when it has
/// grown beyond 500 characters. Throws RangeError, before a line is written, for a code without a
/// name (20 and above).
void NoteStart(EngineRun& run, std::int16_t code);

/// The line that says how operation `code` ended. Results other than 0 to 2 have none.
void NoteResult(EngineRun& run, std::int16_t code);

/// The line for result::kReadBackFails, which only the USB engine has.
void NoteReadBackFails(EngineRun& run);

/// Replaces the log by the two header lines of a compare and its listing, which is emptied.
void NoteListing(EngineRun& run);

/// Announces a verify pass and sets its supply: pass 0 at the supply as it is, 1 raised and 2
/// lowered by quorinwlverifyvcc(0) times 5 %. Lets the message loop run once.
void prgnote1(EngineRun& run, std::uint8_t pass);

/// Announces the blank check that follows an erase.
void NoteBlankCheck(EngineRun& run);

/// Appends the elapsed time of the request, which began at `start` seconds since midnight.
void NoteElapsedTime(EngineRun& run, double start);

}  // namespace fliglaf
