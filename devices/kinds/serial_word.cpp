// AVR parts without pages, programmed byte by byte in instructions of four bytes.
#include <array>

#include "devices/kinds/kinds.h"
#include "simulator/chips/serial_word_chip.h"

namespace fliglaf {
namespace {

constexpr std::int32_t kFlash = 1024;
constexpr std::int32_t kLargestEeprom = 64;

bool EepromFits(const DeviceProfile& device) {
  return device.data_size >= 2 && device.data_size <= kLargestEeprom && device.data_size % 2 == 0;
}

// clang-format off
constexpr std::array kRules{
    ProfileRule{"image_bytes", ImageIsWords, "must be twice 'size' in family 3, with 'address_bytes' 2"},
    ProfileRule{"data_size", EepromFits, "must be an even number from 2 to 64 in family 3, whose instructions have 6 address bits for the EEPROM"},
    ProfileRule{"size", [](D d) { return LayoutOf(d).main_bytes == kFlash; }, "must be 528 and half of 'data_size' in family 3: the EEPROM is programmed from image byte 1024, which must follow the 512 words of flash"},
    ProfileRule{"range", [](D d) { return d.range.first == 0; }, "must begin at 0 in family 3, which would leave out EEPROM bytes below it"},
};
// clang-format on

}  // namespace

constinit const DeviceKind kSerialWord{.rules = kRules,
                                       .make_part = MakePartOf<simulator::SerialWordChip>};

}  // namespace fliglaf
