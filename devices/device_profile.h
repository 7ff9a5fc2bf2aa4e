#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shared/signature.h"

namespace fliglaf {

/// Device addresses, both ends included.
struct AddressRange {
  std::int32_t first = 0;
  std::int32_t last = -1;

  bool operator==(const AddressRange&) const = default;
};

/// Which of the host's operation codes 8 to 11 does what in the device's family.
struct DeviceOperations {
  std::optional<std::uint8_t> erase;
  std::vector<std::uint8_t> lock;  ///< level 1 first; empty: no lock operation
  std::optional<std::uint8_t> config;
};

/// Times of the chip itself, as its data sheet publishes them; the simulated chip is busy for as
/// long. 0: not published, done at once.
struct ChipTimes {
  std::int32_t byte_write_us = 0;
  std::int32_t page_write_us = 0;
  std::int32_t eeprom_write_us = 0;  ///< of a byte
  std::int32_t config_write_us = 0;  ///< of a fuse or lock byte
  std::int32_t erase_ms = 0;
  std::int32_t lock_write_ms = 0;
  std::int32_t start_up_ms = 0;  ///< from the supply to the first instruction
};

/// What the host has to know about a device, in the units of the shared variables.
struct DeviceProfile {
  std::string name;         ///< up to 64 letters, digits, '-', '.', '_'
  std::string description;  ///< a line of up to 200 characters
  std::string source;       ///< where it is written, FILE:LINE

  std::uint8_t family = 0;         ///< 1 to 16
  std::uint8_t option = 0;         ///< variant within the family
  std::int32_t size = 0;           ///< addresses
  std::uint8_t address_bytes = 1;  ///< bytes at an address: 1, or 2 where addresses count words
  std::int32_t image_bytes = 0;  ///< length of the device image; unless given, size x address_bytes
  std::int16_t page = 0;         ///< addresses of a page, 0: no pages
  std::int16_t data_size = 0;    ///< family's parameter: mostly the data memory's size
  AddressRange range;            ///< what an operation covers; unless given, every address
  std::uint8_t config_words = 0;  ///< written over the parallel port; then nothing else is
  std::uint8_t erased = 0xFF;     ///< value of an erased cell: 0xFF or 0x00
  std::optional<Signature> signature;

  std::int16_t supply = 0;               ///< VCC, 10 mV
  std::int16_t programming_voltage = 0;  ///< VPP, 10 mV; 0: none
  std::vector<std::uint8_t> vcc_pins;    ///< socket pins, 1 or 2
  std::vector<std::uint8_t> gnd_pins;    ///< socket pins, 1 or 2
  std::vector<std::uint8_t> vpp_pins;    ///< socket pins, up to 2
  std::int16_t pin_count = 0;            ///< pins of the package
  std::uint8_t adapter = 0;              ///< adapter mode of the programmer

  std::int32_t write_time = 0;  ///< unit of the family's write delays
  std::int16_t retries = 0;     ///< of the programming loops

  DeviceOperations operations;
  ChipTimes chip;
};

}  // namespace fliglaf
