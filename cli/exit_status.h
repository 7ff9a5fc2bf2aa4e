#pragma once

namespace fliglaf::cli {

/// How the program ends.
enum class ExitStatus {
  kSuccess = 0,
  kDiffers = 1,     ///< the device differs, or the operation failed on it
  kUsage = 2,       ///< wrong use, or a bad file; nothing was done to the device
  kProgrammer = 3,  ///< not found, supply, transfer, component failure: the check could not be made
  kUnwritten = 4,   ///< done on the device, but a file or a report of it could not be written
  kStopped = 130,   ///< by the user
};

}  // namespace fliglaf::cli
