// 8051 parts whose serial instructions begin with 0xAA and are framed by a select line.
#include <array>

#include "devices/kinds/kinds.h"
#include "simulator/chips/framed_page_chip.h"

namespace fliglaf {
namespace {

constexpr std::array kHazards{
    ConfigHazard{"fuse", 0, true, "ISP Enable", "turns serial programming off"},
};

std::vector<ConfigByte> ConfigBytes(const DeviceProfile& device) {
  const std::int64_t start = LayoutOf(device).config_start;
  return {{"fuse", start, 0x0F, true}, {"lock", start + 1, 0x03, true}};
}

// clang-format off
constexpr std::array kRules{
    ProfileRule{"image_bytes", ImageIsBytes, "must be 'size' in family 15, with 'address_bytes' 1"},
    ProfileRule{"size", [](D d) { return LayoutOf(d).main_bytes > 0; }, "must be the flash bytes and 32 more in family 15"},
    ProfileRule{"size", [](D d) { return LayoutOf(d).main_bytes <= kOneTransfer; }, "makes more than 16384 bytes of flash; family 15 reads it in one transfer, which holds no more"},
    ProfileRule{"page", FlashIsWholePages, "must divide the flash into whole pages in family 15"},
};
// clang-format on

}  // namespace

constinit const DeviceKind kFramedPage{
    .rules = kRules,
    .config_bytes = ConfigBytes,
    .hazards = [](const DeviceProfile&) { return std::span<const ConfigHazard>(kHazards); },
    .make_part = MakePartOf<simulator::FramedPageChip>};

}  // namespace fliglaf
