// Families 13 and 14: microcontrollers with flash written in pages of words, EEPROM, and fuse and
// lock bytes, programmed over four lines with one set of four-byte instructions. Parts of family 13
// have one fuse byte, or two and calibration bytes, by the device's option; those of family 14 have
// three. The numbers are those of the data sheets of such parts.
#pragma once

#include <memory>

#include "families/family.h"

namespace fliglaf {

[[nodiscard]] std::unique_ptr<Family> MakeSerialPage13(Run& run, WindowLines& lines);
[[nodiscard]] std::unique_ptr<Family> MakeSerialPage14(Run& run, WindowLines& lines);

}  // namespace fliglaf
