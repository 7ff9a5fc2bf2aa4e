#include <array>

#include "families/serial_page.h"
#include "families/serial_page_steps.h"

namespace fliglaf {
namespace {

using namespace serial_page;

constexpr Family kFam14{.flash_read_gap = 0, .eeprom_write_time = 1, .config = config14};

constexpr std::array kConfigWrites{
    ConfigWrite{below_end::kFuseLow, kWriteFuseLow},
    ConfigWrite{below_end::kFuseHigh, kWriteFuseHigh},
    ConfigWrite{below_end::kLock, kWriteLock},
    ConfigWrite{below_end::kFuseExtended, kWriteFuseExtended},
};
constexpr std::array kConfigReads{
    ConfigRead{below_end::kFuseLow, kReadFuseLow},
    ConfigRead{below_end::kCalibration, {kReadCalibration, 0x00, 0x00}},
    ConfigRead{below_end::kFuseHigh, kReadFuseHigh},
    ConfigRead{below_end::kLock, kReadLock, 0x02},
    ConfigRead{below_end::kFuseExtended, kReadFuseExtended},
};

}  // namespace

void dataOp14(Run& run, std::int16_t mode) { DataOp(run, mode, kFam14); }

void program14(Run& run) { Program(run, kFam14, dataOp14); }

void erase14(Run& run) { Erase(run, dataOp14); }

void config14(Run& run, std::string_view direction) {
  if (direction == "input") {
    WriteConfig(run, kConfigWrites);
  } else if (direction == "output") {
    ReadConfig(run, kConfigReads);
  }
}

}  // namespace fliglaf
