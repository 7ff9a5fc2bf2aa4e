// 8051 parts with serial programming in pages of 256 bytes.
#include <array>

#include "devices/kinds/kinds.h"
#include "simulator/chips/isp51_chip.h"

namespace fliglaf {
namespace {

constexpr std::int32_t kPage = 256;
constexpr std::int32_t kLargest = 8192;  // an instruction has address bits 0 to 12

// clang-format off
constexpr std::array kRules{
    ProfileRule{"page", [](D d) { return d.page == kPage; }, "must be 256 in family 1"},
    ProfileRule{"size", [](D d) { return d.size % kPage == 0 && d.size <= kLargest; }, "must be a multiple of 256 up to 8192 in family 1, which writes whole pages"},
    ProfileRule{"image_bytes", ImageIsBytes, "must be 'size' in family 1, with 'address_bytes' 1"},
};
// clang-format on

}  // namespace

constinit const DeviceKind kIsp51{.rules = kRules,
                                  .runs_over_parallel_port = true,
                                  .make_part = MakePartOf<simulator::Isp51Chip>};

}  // namespace fliglaf
