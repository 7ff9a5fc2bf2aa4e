// Parts with configuration words, written over the parallel port in a programming mode of
// their own.
#include "devices/kinds/config_word.h"

#include <algorithm>
#include <array>
#include <memory>

#include "devices/kinds/kinds.h"
#include "simulator/chips/config_word_chip.h"

namespace fliglaf {
namespace {

using simulator::ConfigWordWiring, simulator::LineLevels, simulator::LinesOf;

constexpr LineLevels At(int port, std::uint8_t levels) {
  return {LinesOf(2 * port, 0xFF), LinesOf(2 * port, levels)};
}

constexpr LineLevels operator+(const LineLevels& one, const LineLevels& other) {
  return {one.lines | other.lines, one.levels | other.levels};
}

constexpr int kAny = -1;

struct SocketRow {
  int pins, mode, kind;
  bool adapter;
  ConfigWordWiring wiring;
};

constexpr LineLevels kLow28 = At(0, 0x00) + At(1, 0x00) + At(3, 0x00);
constexpr LineLevels kLow44 = At(0, 0x00) + At(2, 0x00) + At(3, 0x00) + At(5, 0x00);
constexpr LineLevels kAdapter44 = At(3, 0x10) + At(2, 0x82);
constexpr ConfigWordWiring kLarge{At(0, 0x00) + At(1, 0x00), At(1, 0x10), At(1, 0x14)};

// clang-format off
/// The first row that fits a socket holds.
constexpr std::array kSockets = std::to_array<SocketRow>({
    //pins mode  kind  adapter  before the supply                           after it     at the end
    { 6, kAny, kAny, false, {At(0, 0x00),                                At(0, 0x20), At(0, 0x60)}},
    { 8,    5,    2, false, {At(0, 0x00),                                At(0, 0x02), At(0, 0x82)}},
    { 8, kAny, kAny, false, {At(0, 0x00),                                At(0, 0x01), At(0, 0x09)}},
    {14,   22, kAny, false, {At(1, 0x40),                                At(1, 0x00), At(1, 0x00) + At(0, 0x01)}},
    {14, kAny, kAny, false, {At(1, 0x00),                                At(1, 0x0A), At(1, 0x0A) + At(0, 0x01)}},
    {18, kAny, kAny, false, kLarge},
    {20,   40,    1, false, {At(0, 0x00) + At(1, 0x00) + At(2, 0x00),    At(0, 0x40), At(0, 0x03)}},
    {20, kAny, kAny, false, kLarge},
    {28,    5,    5, false, {kLow28,                                     At(3, 0x08), At(3, 0x28)}},
    {28, kAny, kAny, false, {kLow28,                                     At(1, 0x20), At(1, 0x20) + At(3, 0x04)}},
    {40, kAny, kAny, false, {At(1, 0x00) + At(2, 0x00) + At(4, 0x00),    At(2, 0x84), At(2, 0x84) + At(4, 0x01)}},
    {44, kAny, kAny, true,  {kLow44,                                     kAdapter44,  kAdapter44 + At(5, 0x08)}},
    {44, kAny, kAny, false, {kLow44,                                     At(0, 0x00), At(0, 0x20)}},
    {64, kAny, kAny, false, kLarge},
    {68, kAny, kAny, false, kLarge},
    {80, kAny, kAny, false, kLarge},
    {84, kAny, kAny, false, kLarge},
});
// clang-format on

const ConfigWordWiring& WiringOf(const ConfigWordSocket& socket) {
  const auto fits = [](int wanted, int is) { return wanted == kAny || wanted == is; };
  for (const SocketRow& row : kSockets) {
    if (row.pins == socket.pins && fits(row.mode, socket.mode) && fits(row.kind, socket.kind) &&
        (socket.adapter || !row.adapter)) {
      return row.wiring;
    }
  }
  throw std::invalid_argument("no socket for configuration words has " +
                              std::to_string(socket.pins) + " pins");
}

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
  return std::ranges::find(kSockets, device.pin_count, &SocketRow::pins) != kSockets.end();
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
          clock, WiringOf(socket), SiliconOf(device),
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
