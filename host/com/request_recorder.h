#pragma once

#include <string_view>

#include "host/library.h"

namespace fliglaf {

/// Carries out a request and, when the environment variable FLIGLAF_RECORD names a file, writes a
/// record of it there. The file of an earlier request of the process stays: the second goes into
/// run.2.run where the first went into run.run. If a record cannot be written, a line of the
/// log says so.
void RecordRequest(std::string_view call, SharedVariables& variables, Programmer& programmer,
                   platform::Desktop& desktop, const Library::CarryOut& carry_out);

/// How that line begins.
inline constexpr std::u16string_view kNotRecorded = u">>The run is not recorded: ";

}  // namespace fliglaf
