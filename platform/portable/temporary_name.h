// Names of the files under which a new content is built before it takes the place of the old one.
#pragma once

#include <filesystem>

namespace fliglaf::platform {

/// A name of this process, ".fliglaf-PID-RANDOM.tmp", that no file of `folder` should have. It does
/// not grow with the name of the file to come, which may be as long as the system allows.
[[nodiscard]] std::filesystem::path TemporaryName(const std::filesystem::path& folder);

/// Removes such files from `folder` if the process in the name has ended and nobody has the file
/// locked, as their makers do: a process of another container or machine is not seen by its number.
void RemoveStaleTemporaries(const std::filesystem::path& folder);

}  // namespace fliglaf::platform
