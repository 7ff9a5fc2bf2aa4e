#pragma once

#include <cstdint>
#include <span>

#include "cli/options.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// Reads the files that the options name into the device image, over the erased bytes that it
/// holds. Returns how many bytes they gave. Throws UsageError when none is named, the device has no
/// such memory, or an address lies outside it; ImageError for a file that cannot be read.
std::size_t LoadImage(const Options& options, const DeviceProfile& device,
                      std::span<std::uint8_t> image);

}  // namespace fliglaf::cli
