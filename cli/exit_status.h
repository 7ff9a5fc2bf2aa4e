#pragma once

namespace fliglaf::cli {

/// How the program ends.
enum class ExitStatus {
  kSuccess = 0,
  kDiffers = 1,     ///< the device differs, or the operation failed on it
  kUsage = 2,       ///< wrong use, or a bad file
  kProgrammer = 3,  ///< not found, supply, transfer, component failure: the check could not be made
  kStopped = 130,   ///< by the user
};

}  // namespace fliglaf::cli
