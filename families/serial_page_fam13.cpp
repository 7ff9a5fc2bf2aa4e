#include "families/serial_page_fam13.h"

#include <array>

#include "families/serial_page.h"

namespace fliglaf {
namespace {

using namespace serial_page;

/// The option of parts with one fuse byte; all others have two, and calibration bytes.
constexpr std::uint8_t kOneFuseByte = 14;

constexpr std::array kOneFuseWrites{
    ConfigWrite{ConfigByte::kFuseLow, kWriteFuseLow, 0x80},
    ConfigWrite{ConfigByte::kLock, kWriteLock, 0xC0},
};
constexpr std::array kOneFuseReads{
    ConfigRead{ConfigByte::kFuseLow, kReadFuseLow},
    ConfigRead{ConfigByte::kLock, kReadLock, 0x02},
};

constexpr std::array kTwoFuseWrites{
    ConfigWrite{ConfigByte::kFuseLow, kWriteFuseLow},
    ConfigWrite{ConfigByte::kFuseHigh, kWriteFuseHigh},
    ConfigWrite{ConfigByte::kLock, kWriteLock, 0xC0},
};

/// The calibration byte that belongs to the clock source in the low fuse byte: sources 1 to 4 are
/// the four frequencies of the internal oscillator.
constexpr ConfigRead CalibrationOf(std::uint8_t fuse_low) {
  const int source = fuse_low & 0x07;
  const auto which = static_cast<std::uint8_t>(source == 0 ? 0 : (source - 1) & 0x03);
  return {ConfigByte::kCalibration, ReadCalibration(which)};
}

class SerialPageFam13 : public SerialPage {
 public:
  explicit SerialPageFam13(Run& request)
      : SerialPage(request, {.code = 13, .flash_read_gap = 10, .eeprom_write = 2}) {}

  void ReadPass(CheckMode mode) override { dataOp13(mode); }
  void Program() override { program13(); }
  void Code8() override { erase13(); }
  void Code9() override { config13(ConfigDirection::kInput); }

 private:
  void dataOp13(CheckMode mode) { DataOp(mode); }
  void program13() { WriteAndVerify(); }
  void erase13() { Erase(); }

  void config13(ConfigDirection direction) {
    const bool one_fuse = vars.quorinwoption[0] == kOneFuseByte;
    if (direction == ConfigDirection::kInput) {
      if (one_fuse) return WriteConfig(kOneFuseWrites);
      WriteConfig(kTwoFuseWrites);
    } else {
      if (one_fuse) return ReadConfig(kOneFuseReads);
      ReadTwoFuses();
    }
  }
  void Config(ConfigDirection direction) override { config13(direction); }

  void ReadTwoFuses() {
    ReadConfig(std::array{ConfigRead{ConfigByte::kFuseLow, kReadFuseLow}});
    ReadConfig(std::array{
        CalibrationOf(ImageByte(ConfigByte::kFuseLow)),
        ConfigRead{ConfigByte::kFuseHigh, kReadFuseHigh},
        ConfigRead{ConfigByte::kLock, kReadLock, 0x02},
    });
    ImageByte(ConfigByte::kFuseExtended) = 0xFF;  // these parts have none
  }
};

}  // namespace

std::unique_ptr<Family> MakeSerialPageFam13(Run& run, WindowLines& /*lines*/) {
  return std::make_unique<SerialPageFam13>(run);
}

}  // namespace fliglaf
