// 8051 parts with a data EEPROM, programmed byte by byte in instructions of three bytes.
#include <array>

#include "devices/kinds/kinds.h"
#include "simulator/chips/isp51_data_chip.h"

namespace fliglaf {
namespace {

constexpr std::int32_t kLargest = 8192;  // an instruction has address bits 0 to 12
constexpr std::int32_t kLargestData = 2048;

// clang-format off
constexpr std::array kRules{
    ProfileRule{"size", [](D d) { return d.size - d.data_size <= kLargest; }, "must be up to 8192, besides 'data_size', in family 2, whose instructions have 13 address bits"},
    ProfileRule{"data_size", [](D d) { return d.data_size >= 1 && d.data_size <= kLargestData; }, "must be 1 to 2048 in family 2, whose instructions have 11 address bits for the data memory"},
    ProfileRule{"image_bytes", ImageIsBytes, "must be 'size' in family 2, with 'address_bytes' 1"},
};
// clang-format on

}  // namespace

constinit const DeviceKind kIsp51Data{.rules = kRules,
                                      .make_part = MakePartOf<simulator::Isp51DataChip>};

}  // namespace fliglaf
