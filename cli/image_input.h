#pragma once

#include <cstdint>
#include <span>

#include "cli/options.h"
#include "devices/device_profile.h"

namespace fliglaf::cli {

/// Reads the file that the options name into the device image, over the erased bytes that it holds.
/// Returns how many bytes the file gave. Throws UsageError when none is named or an address lies
/// outside the device, ImageError for a file that cannot be read.
std::size_t LoadImage(const Options& options, const DeviceProfile& device,
                      std::span<std::uint8_t> image);

}  // namespace fliglaf::cli
