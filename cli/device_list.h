#pragma once

#include "devices/device_catalogue.h"

namespace fliglaf::cli {

/// Prints the devices as a table, or as a JSON array.
void PrintDevices(const DeviceCatalogue& catalogue, bool json);

}  // namespace fliglaf::cli
