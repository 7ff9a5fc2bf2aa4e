#include "simulator/bench/bench.h"

#include <algorithm>
#include <stdexcept>

#include "simulator/chips/avr_jtag_chip.h"
#include "simulator/chips/config_word_chip.h"
#include "simulator/chips/flash_register_chip.h"
#include "simulator/chips/framed_page_chip.h"
#include "simulator/chips/isp51_chip.h"
#include "simulator/chips/isp51_data_chip.h"
#include "simulator/chips/serial_page_chip.h"
#include "simulator/chips/serial_word_chip.h"
#include "simulator/chips/two_wire_chip.h"

namespace fliglaf::simulator {
namespace {

std::unique_ptr<Chip> MakeIsp51DataChip(const ChipDescription& description, const Clock& clock) {
  return std::make_unique<Isp51DataChip>(
      clock, Isp51DataModel{.flash_bytes = description.flash_bytes,
                            .eeprom_bytes = description.eeprom_bytes,
                            .flash_write = description.byte_write_us * Clock::kMicrosecond,
                            .eeprom_write = description.eeprom_write_us * Clock::kMicrosecond,
                            .chip_erase = description.erase_ms * Clock::kMillisecond});
}

std::unique_ptr<Chip> MakeSerialWordChip(const ChipDescription& description, const Clock& clock) {
  return std::make_unique<SerialWordChip>(
      clock, SerialWordModel{.flash_bytes = description.flash_bytes,
                             .eeprom_bytes = description.eeprom_bytes,
                             .signature = description.signature,
                             .flash_write = description.byte_write_us * Clock::kMicrosecond,
                             .eeprom_write = description.eeprom_write_us * Clock::kMicrosecond,
                             .lock_write = description.lock_write_ms * Clock::kMillisecond,
                             .chip_erase = description.erase_ms * Clock::kMillisecond});
}

/// Fuse bytes of families 13 and 14: the first variant of family 13 has the low one only.
std::size_t FuseBytes(const ChipDescription& description) {
  if (description.family == 14) return 3;
  return description.option == 14 ? 1 : 2;
}

std::unique_ptr<Chip> MakeSerialPageChip(const ChipDescription& description, const Clock& clock) {
  return std::make_unique<SerialPageChip>(
      clock, SerialPageModel{.flash_bytes = description.flash_bytes,
                             .page_bytes = description.page_bytes,
                             .eeprom_bytes = description.eeprom_bytes,
                             .fuse_bytes = FuseBytes(description),
                             .signature = description.signature,
                             .page_write = description.page_write_us * Clock::kMicrosecond,
                             .eeprom_write = description.eeprom_write_us * Clock::kMicrosecond,
                             .config_write = description.config_write_us * Clock::kMicrosecond,
                             .chip_erase = description.erase_ms * Clock::kMillisecond,
                             .start_up = description.start_up_ms * Clock::kMillisecond});
}

std::unique_ptr<Chip> MakeFramedPageChip(const ChipDescription& description, const Clock& clock) {
  return std::make_unique<FramedPageChip>(
      clock, FramedPageModel{.flash_bytes = description.flash_bytes,
                             .page_bytes = description.page_bytes,
                             .signature = description.signature,
                             .page_write = description.page_write_us * Clock::kMicrosecond,
                             .config_write = description.config_write_us * Clock::kMicrosecond,
                             .chip_erase = description.erase_ms * Clock::kMillisecond});
}

const JtagWiring& FlashRegisterWiring(std::uint8_t option) {
  switch (option) {
    case 22:
      return kJtagWiring22;
    case 23:
      return kJtagWiring23;
    case 24:
      return kJtagWiring24;
    default:
      return kJtagWiring;
  }
}

/// Null for a chip that has no test access port.
const JtagWiring* JtagWiringOf(const ChipDescription& description) {
  if (description.family >= 4 && description.family <= 7) return &kJtagWiring;
  if (description.family < 8 || description.family > 11) return nullptr;
  return &FlashRegisterWiring(description.option);
}

std::unique_ptr<Chip> MakeAvrJtagChip(const ChipDescription& description, const Clock& clock) {
  constexpr std::uint8_t kTwoFuseBytes = 6;
  return std::make_unique<AvrJtagChip>(
      clock, *JtagWiringOf(description),
      AvrJtagModel{.flash_bytes = description.flash_bytes,
                   .page_bytes = description.page_bytes,
                   .eeprom_bytes = description.eeprom_bytes,
                   .eeprom_page_bytes = std::max<std::size_t>(description.page_bytes / 32, 1),
                   .long_page_register = description.family != 4,
                   .extended_fuses = description.option != kTwoFuseBytes,
                   .signature = description.signature,
                   .page_write = description.page_write_us * Clock::kMicrosecond,
                   .eeprom_write = description.eeprom_write_us * Clock::kMicrosecond,
                   .config_write = description.config_write_us * Clock::kMicrosecond,
                   .chip_erase = description.erase_ms * Clock::kMillisecond});
}

std::unique_ptr<Chip> MakeFlashRegisterChip(const ChipDescription& description,
                                            const Clock& clock) {
  constexpr std::uint8_t kSetB = 15;
  return std::make_unique<FlashRegisterChip>(
      clock, *JtagWiringOf(description),
      FlashRegisterModel{.main_bytes = description.flash_bytes,
                         .page_bytes = description.page_bytes,
                         .second_bytes = description.eeprom_bytes,
                         .second_apart = description.family >= 10,
                         .wide = description.option == kSetB,
                         .signature = description.signature,
                         .byte_write = description.byte_write_us * Clock::kMicrosecond,
                         .page_erase = description.erase_ms * Clock::kMillisecond});
}

std::unique_ptr<Chip> MakeTwoWireChip(const ChipDescription& description, const Clock& clock) {
  constexpr std::uint8_t kFirstWithVpp = 30;
  const auto& [maker, device, revision] = description.signature;
  return std::make_unique<TwoWireChip>(
      clock, TwoWireWiringOf(description.family, description.option),
      TwoWireModel{.main_bytes = description.flash_bytes,
                   .page_bytes = description.page_bytes,
                   .device = device,
                   .revision = revision,
                   .needs_vpp = description.family == 12 && description.option >= kFirstWithVpp,
                   .byte_write = description.byte_write_us * Clock::kMicrosecond,
                   .device_erase = description.erase_ms * Clock::kMillisecond});
}

/// The pins of the device, and those of the adapter that has a supply of its own.
SupplyPins SupplyOf(const ChipDescription& description) {
  constexpr std::uint8_t kTwoWire = 12;
  constexpr std::uint8_t kAdapter = 23;
  SupplyPins supply = description.supply;
  if (description.family == kTwoWire && description.option == kAdapter) {
    supply.vcc.push_back(0x77);
    supply.gnd.insert(supply.gnd.end(), {0x76, 0x13});
  }
  return supply;
}

std::unique_ptr<Chip> MakeConfigWordChip(const ChipDescription& description, const Clock& clock) {
  const ConfigWordPart& part = *description.config_words;
  return std::make_unique<ConfigWordChip>(
      clock, ConfigWordWiringOf(part.socket),
      ConfigWordModel{.words = part.words,
                      .vpp_first = part.vpp_first,
                      .word_write = description.config_write_us * Clock::kMicrosecond});
}

std::unique_ptr<Chip> MakeChip(const ChipDescription& description, const Clock& clock) {
  if (description.config_words) return MakeConfigWordChip(description, clock);
  switch (description.family) {
    case 1:
      return std::make_unique<Isp51Chip>(
          clock, description.flash_bytes, description.signature,
          Isp51Timing{.byte_write = description.byte_write_us * Clock::kMicrosecond,
                      .chip_erase = description.erase_ms * Clock::kMillisecond,
                      .lock_write = description.lock_write_ms * Clock::kMillisecond});
    case 2:
      return MakeIsp51DataChip(description, clock);
    case 3:
      return MakeSerialWordChip(description, clock);
    case 4:
    case 5:
    case 6:
    case 7:
      return MakeAvrJtagChip(description, clock);
    case 8:
    case 9:
    case 10:
    case 11:
      return MakeFlashRegisterChip(description, clock);
    case 12:
    case 16:
      return MakeTwoWireChip(description, clock);
    case 13:
    case 14:
      return MakeSerialPageChip(description, clock);
    case 15:
      return MakeFramedPageChip(description, clock);
    default:
      throw std::invalid_argument("there is no simulated chip of family " +
                                  std::to_string(description.family));
  }
}

}  // namespace

bool Bench::Supports(std::uint8_t family) { return family >= 1 && family <= 16; }

Bench::Bench(const ChipDescription& description, std::int16_t instance, const Faults& faults,
             bool real_time)
    : clock_(real_time),
      chip_(MakeChip(description, clock_)),
      socket_(faults.no_chip ? nullptr : chip_.get(), SupplyOf(description)),
      jtag_wiring_(JtagWiringOf(description)),
      programmer_(clock_, socket_, instance) {
  if (description.config_words) socket_.JoinInput();
  for (const StuckBit& stuck : faults.stuck_bits) chip_->Break(stuck);
  if (faults.answer_stuck) socket_.StickAnswer(*faults.answer_stuck);
  if (faults.programmer.empty()) return;
  faults_ = std::make_unique<PlannedFaults>(programmer_, programmer_, faults.programmer);
  io_ = faults_.get();
  time_ = faults_.get();
}

std::unique_ptr<JtagCable> Bench::AttachJtagCable() {
  if (jtag_wiring_ == nullptr) return nullptr;
  return std::make_unique<JtagCable>(clock_, socket_, *jtag_wiring_);
}

}  // namespace fliglaf::simulator
