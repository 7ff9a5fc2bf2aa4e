#include "families/serial_page_fam14.h"

#include <array>

#include "families/serial_page.h"

namespace fliglaf {
namespace {

using namespace serial_page;

constexpr std::array kConfigWrites{
    ConfigWrite{ConfigByte::kFuseLow, kWriteFuseLow},
    ConfigWrite{ConfigByte::kFuseHigh, kWriteFuseHigh},
    ConfigWrite{ConfigByte::kLock, kWriteLock},
    ConfigWrite{ConfigByte::kFuseExtended, kWriteFuseExtended},
};
constexpr std::array kConfigReads{
    ConfigRead{ConfigByte::kFuseLow, kReadFuseLow},
    ConfigRead{ConfigByte::kCalibration, ReadCalibration(0)},
    ConfigRead{ConfigByte::kFuseHigh, kReadFuseHigh},
    ConfigRead{ConfigByte::kLock, kReadLock, 0x02},
    ConfigRead{ConfigByte::kFuseExtended, kReadFuseExtended},
};

class SerialPageFam14 : public SerialPage {
 public:
  explicit SerialPageFam14(Run& request)
      : SerialPage(request, {.code = 14, .flash_read_gap = 0, .eeprom_write = 1}) {}

  void ReadPass(CheckMode mode) override { dataOp14(mode); }
  void Program() override { program14(); }
  void Code8() override { erase14(); }
  void Code9() override { config14(ConfigDirection::kInput); }

 private:
  void dataOp14(CheckMode mode) { DataOp(mode); }
  void program14() { WriteAndVerify(); }
  void erase14() { Erase(); }

  void config14(ConfigDirection direction) {
    if (direction == ConfigDirection::kInput) return WriteConfig(kConfigWrites);
    ReadConfig(kConfigReads);
  }
  void Config(ConfigDirection direction) override { config14(direction); }
};

}  // namespace

std::unique_ptr<Family> MakeSerialPageFam14(Run& run, WindowLines& /*lines*/) {
  return std::make_unique<SerialPageFam14>(run);
}

}  // namespace fliglaf
