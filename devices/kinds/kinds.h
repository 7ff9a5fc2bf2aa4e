// The kinds of devices, each in a file of its name, and what several of them share.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "devices/kinds/device_kind.h"
#include "simulator/silicon.h"

namespace fliglaf {

extern const DeviceKind kAvrJtag;
extern const DeviceKind kConfigWord;
extern const DeviceKind kFlashRegister;
extern const DeviceKind kFramedPage;
extern const DeviceKind kIsp51;
extern const DeviceKind kIsp51Data;
extern const DeviceKind kSerialPage;
extern const DeviceKind kSerialWord;
extern const DeviceKind kTwoWire;

/// What a data sheet says of the part, and nothing of how a host drives it.
[[nodiscard]] simulator::Silicon SiliconOf(const DeviceProfile& device);
[[nodiscard]] simulator::SupplyPins SupplyOf(const DeviceProfile& device);

/// The part of a kind whose chips differ in their silicon only.
template <typename Chip>
simulator::Part MakePartOf(const DeviceProfile& device, const simulator::Clock& clock) {
  return {.chip = std::make_unique<Chip>(clock, SiliconOf(device)), .supply = SupplyOf(device)};
}

/// How a part is wired, by its option.
template <typename Wiring>
struct Variant {
  std::uint8_t option;
  Wiring wiring;
};

/// Throws std::invalid_argument for an option that no variant has.
template <typename Wiring, std::size_t kCount>
const Wiring& WiringFor(std::uint8_t option, const std::array<Variant<Wiring>, kCount>& variants) {
  for (const auto& variant : variants) {
    if (variant.option == option) return variant.wiring;
  }
  throw std::invalid_argument("no chip is wired for option " + std::to_string(option));
}

using D = const DeviceProfile&;  // for the tables of rules

/// Bytes of a memory that a family fetches in one transfer; more would never be read.
inline constexpr std::int32_t kOneTransfer = 16'384;

/// Of families whose addresses count bytes.
[[nodiscard]] bool ImageIsBytes(const DeviceProfile& device);
/// Of families whose addresses count words of two bytes.
[[nodiscard]] bool ImageIsWords(const DeviceProfile& device);
[[nodiscard]] bool FlashIsWholePages(const DeviceProfile& device);
/// A page of 2^n addresses, from `least` to `most`.
[[nodiscard]] bool PageIsPowerOfTwo(const DeviceProfile& device, int least, int most);

}  // namespace fliglaf
