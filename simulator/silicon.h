#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace fliglaf::simulator {

/// What a data sheet says of one part of a kind. A time of 0: done at once.
struct Silicon {
  std::size_t flash_bytes = 0;   ///< of the main memory
  std::size_t page_bytes = 0;    ///< 0: no pages
  std::size_t eeprom_bytes = 0;  ///< of the data memory or the second area; 0: none
  std::array<std::uint8_t, 3> signature{};
  std::chrono::nanoseconds byte_write{};
  std::chrono::nanoseconds page_write{};
  std::chrono::nanoseconds eeprom_write{};  ///< of a byte or a page of it
  std::chrono::nanoseconds config_write{};  ///< of a fuse or lock byte, a configuration word
  std::chrono::nanoseconds erase{};         ///< of the chip, or of a page where it erases pages
  std::chrono::nanoseconds lock_write{};
  std::chrono::nanoseconds start_up{};  ///< from the supply to the first instruction
};

}  // namespace fliglaf::simulator
