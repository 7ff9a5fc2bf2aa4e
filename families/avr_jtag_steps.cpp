#include "families/avr_jtag_steps.h"

#include <algorithm>

#include "families/jtag_lines.h"
#include "families/read_pass.h"

namespace fliglaf::avr_jtag {
namespace {

/// Words at the end of the memory size that hold the configuration bytes.
constexpr std::int64_t kConfigWords = 16;

constexpr std::int16_t kInstructionBits = 4;
constexpr std::int16_t kCommandBits = 15;

}  // namespace

void Select(Run& run, Instruction instruction) {
  scanIr(run, static_cast<std::int32_t>(instruction), kInstructionBits);
}

void Scan(Run& run, std::initializer_list<std::int32_t> commands) {
  for (const std::int32_t command : commands) scanDr(run, command, kCommandBits);
}

void ScanAddressHigh(Run& run, std::int64_t address) {
  Scan(run, {command::kAddressHigh | static_cast<std::int32_t>(address >> 8 & 0xFF)});
}

void ScanAddressLow(Run& run, std::int64_t address) {
  Scan(run, {command::kAddressLow | static_cast<std::int32_t>(address & 0xFF)});
}

void WalkToShiftDr(Run& run) {
  setTms(run, 1);
  pulseTck(run);
  setTms(run, 0);
  pulseTckN(run, 2);
}

std::int64_t FlashWords(const Run& run) {
  return std::int64_t{run.vars.quorintlength[0]} - run.vars.quorinbvcch[0] - kConfigWords;
}

std::int64_t EepromBytes(const Run& run) { return 2 * std::int64_t{run.vars.quorinbvcch[0]}; }

void RequireImage(const Run& run) {
  RequireOneBlock(EepromBytes(run));
  RequireData(run, 0, 2 * FlashWords(run) - 1);
}

std::int64_t PageWords(const Run& run) {
  return std::max<std::int64_t>(run.vars.quorinpagelength[0], 1);
}

std::int64_t ConfigStart(const Run& run) {
  return 2 * (std::int64_t{run.vars.quorintlength[0]} - kConfigWords);
}

std::optional<FuseBytes> FusesOf(const Run& run) {
  switch (run.vars.quorinwoption[0]) {
    case 4:
    case 5:
    case 7:
    case 8:
      return FuseBytes{.extended = true};
    case 6:
      return FuseBytes{.extended = false};
    default:
      return std::nullopt;
  }
}

}  // namespace fliglaf::avr_jtag
