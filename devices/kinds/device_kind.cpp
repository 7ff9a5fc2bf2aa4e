#include "devices/kinds/device_kind.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>

#include "devices/kinds/kinds.h"

namespace fliglaf {
namespace {

struct KindRow {
  std::uint8_t family;
  const DeviceKind* kind;
};

constexpr std::array kKinds{
    KindRow{1, &kIsp51},          KindRow{2, &kIsp51Data},      KindRow{3, &kSerialWord},
    KindRow{4, &kAvrJtag},        KindRow{5, &kAvrJtag},        KindRow{6, &kAvrJtag},
    KindRow{7, &kAvrJtag},        KindRow{8, &kFlashRegister},  KindRow{9, &kFlashRegister},
    KindRow{10, &kFlashRegister}, KindRow{11, &kFlashRegister}, KindRow{12, &kTwoWire},
    KindRow{13, &kSerialPage},    KindRow{14, &kSerialPage},    KindRow{15, &kFramedPage},
    KindRow{16, &kTwoWire},
};

}  // namespace

/// Configuration words are a programming mode, in which the family code means something else.
const DeviceKind& KindOf(const DeviceProfile& device) {
  if (device.config_words > 0) return kConfigWord;
  const auto found = std::ranges::find(kKinds, device.family, &KindRow::family);
  if (found != kKinds.end()) return *found->kind;
  throw std::invalid_argument("there is no device of family " + std::to_string(device.family));
}

ImageLayout FamilyLayout(const DeviceProfile& device) {
  return LayoutOf(device.family,
                  {.size = device.size, .data_size = device.data_size, .page = device.page});
}

ImageLayout LayoutOf(const DeviceProfile& device) { return KindOf(device).layout(device); }

std::vector<ConfigByte> ConfigBytesOf(const DeviceProfile& device) {
  const DeviceKind& kind = KindOf(device);
  return kind.config_bytes == nullptr ? std::vector<ConfigByte>{} : kind.config_bytes(device);
}

std::span<const ConfigHazard> ConfigHazardsOf(const DeviceProfile& device) {
  const DeviceKind& kind = KindOf(device);
  return kind.hazards == nullptr ? std::span<const ConfigHazard>{} : kind.hazards(device);
}

bool ReadsConfig(const DeviceProfile& device) { return KindOf(device).reads_config; }

bool RunsOverParallelPort(const DeviceProfile& device) {
  return KindOf(device).runs_over_parallel_port;
}

}  // namespace fliglaf
