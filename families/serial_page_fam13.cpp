#include <array>

#include "families/serial_page.h"
#include "families/serial_page_steps.h"

namespace fliglaf {
namespace {

using namespace serial_page;

constexpr Family kFam13{.flash_read_gap = 10, .eeprom_write_time = 2, .config = config13};

/// The variant with one fuse byte; every other has two, and calibration bytes.
constexpr std::uint8_t kOneFuseByte = 14;

constexpr std::array kOneFuseWrites{
    ConfigWrite{below_end::kFuseLow, kWriteFuseLow, 0x80},
    ConfigWrite{below_end::kLock, kWriteLock, 0xC0},
};
constexpr std::array kOneFuseReads{
    ConfigRead{below_end::kFuseLow, kReadFuseLow},
    ConfigRead{below_end::kLock, kReadLock, 0x02},
};

constexpr std::array kTwoFuseWrites{
    ConfigWrite{below_end::kFuseLow, kWriteFuseLow},
    ConfigWrite{below_end::kFuseHigh, kWriteFuseHigh},
    ConfigWrite{below_end::kLock, kWriteLock, 0xC0},
};

/// The calibration byte that belongs to the clock source in the low fuse byte: sources 1 to 4 are
/// the four frequencies of the internal oscillator.
ConfigRead CalibrationOf(std::uint8_t fuse_low) {
  const int source = fuse_low & 0x07;
  const auto which = static_cast<std::uint8_t>(source == 0 ? 0 : (source - 1) & 0x03);
  return {below_end::kCalibration, {kReadCalibration, 0x00, which}};
}

void ReadTwoFuses(Run& run) {
  ReadConfig(run, std::array{ConfigRead{below_end::kFuseLow, kReadFuseLow}});
  const std::array others{
      CalibrationOf(ConfigByte(run, below_end::kFuseLow)),
      ConfigRead{below_end::kFuseHigh, kReadFuseHigh},
      ConfigRead{below_end::kLock, kReadLock, 0x02},
  };
  ReadConfig(run, others);
  ConfigByte(run, below_end::kFuseExtended) = 0xFF;  // there is none
}

}  // namespace

void dataOp13(Run& run, std::int16_t mode) { DataOp(run, mode, kFam13); }

void program13(Run& run) { Program(run, kFam13, dataOp13); }

void erase13(Run& run) { Erase(run, dataOp13); }

void config13(Run& run, std::string_view direction) {
  const bool one_fuse = run.vars.quorinwoption[0] == kOneFuseByte;
  if (direction == "input") {
    if (one_fuse) return WriteConfig(run, kOneFuseWrites);
    WriteConfig(run, kTwoFuseWrites);
  } else if (direction == "output") {
    if (one_fuse) return ReadConfig(run, kOneFuseReads);
    ReadTwoFuses(run);
  }
}

}  // namespace fliglaf
