// Parts with configuration words, written over the parallel port in a programming mode of their
// own.
#include <algorithm>
#include <array>
#include <memory>

#include "devices/kinds/common.h"
#include "devices/kinds/config_word_sockets.h"
#include "devices/kinds/kinds.h"
#include "simulator/chips/config_word_chip.h"

namespace fliglaf {
namespace {

using D = const DeviceProfile&;

constexpr std::int32_t kPage = 256;
constexpr std::int32_t kLargest = 8192;
constexpr std::int32_t kLastWord = 16'398;  // image byte

ImageLayout Layout(const DeviceProfile& device) {
  const std::int64_t bytes = std::int64_t{device.size} * device.address_bytes;
  return {.main_bytes = bytes, .data_start = bytes};
}

/// Words of 14 bits, the last of them at image byte 16398.
std::vector<ConfigByte> ConfigBytes(const DeviceProfile& device) {
  constexpr std::uint8_t kHighBits = 0x3F;
  if (device.config_words == 1) {
    return {{"low", kLastWord, 0xFF, true}, {"high", kLastWord + 1, kHighBits, true}};
  }
  return {{"low0", kLastWord - 2, 0xFF, true},
          {"high0", kLastWord - 1, kHighBits, true},
          {"low1", kLastWord, 0xFF, true},
          {"high1", kLastWord + 1, kHighBits, true}};
}

bool HasSocket(const DeviceProfile& device) {
  constexpr std::array kPins{6, 8, 14, 18, 20, 28, 40, 44, 64, 68, 80, 84};
  return std::ranges::find(kPins, device.pin_count) != kPins.end();
}

// clang-format off
constexpr std::array kRules{
    ProfileRule{"config_words", [](D d) { return d.family == 1; }, "belongs to family 1 only"},
    ProfileRule{"page", [](D d) { return d.page == kPage; }, "must be 256 in family 1"},
    ProfileRule{"size", [](D d) { return d.size % kPage == 0 && d.size <= kLargest; }, "must be a multiple of 256 up to 8192 in family 1, which writes whole pages"},
    ProfileRule{"config_words", [](D d) { return d.operations.config == 8; }, "is written by 'config' = 8"},
    ProfileRule{"config_words", [](D d) { return !d.vpp_pins.empty(); }, "needs 'vpp_pins' for the programming voltage"},
    ProfileRule{"image_bytes", [](D d) { return d.image_bytes >= kLastWord + 2; }, "must be 16400 or more with 'config_words', the last of which is at 16398"},
    ProfileRule{"pin_count", HasSocket, "must be 6, 8, 14, 18, 20, 28, 40, 44, 64, 68, 80 or 84 with 'config_words'"},
};
// clang-format on

simulator::Part MakePart(const DeviceProfile& device, const simulator::Clock& clock) {
  return MakeConfigWordPart(device, {.pins = device.pin_count, .mode = device.family}, clock);
}

}  // namespace

simulator::Part MakeConfigWordPart(const DeviceProfile& device, const ConfigWordSocket& socket,
                                   const simulator::Clock& clock) {
  using simulator::ConfigWordChip;
  return {
      .chip = std::make_unique<ConfigWordChip>(
          clock, ConfigWordWiringOf(socket), SiliconOf(device),
          ConfigWordChip::Features{.words = device.config_words, .vpp_first = socket.vpp_first}),
      .supply = SupplyOf(device),
      .joined_input = ConfigWordChip::kDataOut};
}

constinit const DeviceKind kConfigWord{.layout = Layout,
                                       .rules = kRules,
                                       .config_bytes = ConfigBytes,
                                       .runs_over_parallel_port = true,
                                       .make_part = MakePart};

}  // namespace fliglaf
