#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "simulator/chip.h"

namespace fliglaf::simulator {

/// Flash or EEPROM cells: programming takes bits from 1 to 0, erasing makes all of them 1.
/// Addresses beyond the array wrap around, as a decoder with fewer address lines has it.
class FlashArray {
 public:
  static constexpr std::uint8_t kErased = 0xFF;

  /// `size` in bytes, above 0.
  explicit FlashArray(std::size_t size) : cells_(size, kErased) {}

  [[nodiscard]] std::uint8_t Read(std::uint32_t address) const {
    const std::size_t index = address % cells_.size();
    std::uint8_t byte = cells_[index];
    for (const StuckBit& stuck : stuck_) {
      if (stuck.address % cells_.size() != index) continue;
      const auto mask = static_cast<std::uint8_t>(1U << stuck.bit);
      byte = static_cast<std::uint8_t>(stuck.value ? byte | mask : byte & ~mask);
    }
    return byte;
  }
  void Program(std::uint32_t address, std::uint8_t byte) {
    cells_[address % cells_.size()] &= byte;
  }
  /// Programs the page that holds `address` from its buffer, which is erased afterwards.
  void ProgramPage(std::uint32_t address, std::span<std::uint8_t> buffer) {
    const auto size = static_cast<std::uint32_t>(buffer.size());
    std::uint32_t at = address / size * size;
    for (const std::uint8_t byte : buffer) Program(at++, byte);
    std::ranges::fill(buffer, kErased);
  }
  /// What an EEPROM does with a byte: erases its cell first.
  void Rewrite(std::uint32_t address, std::uint8_t byte) { cells_[address % cells_.size()] = byte; }
  void Erase() { std::ranges::fill(cells_, kErased); }
  /// Up to `count` bytes from `first` on, those within the array.
  void Erase(std::size_t first, std::size_t count) {
    const auto end =
        cells_.begin() + static_cast<std::ptrdiff_t>(std::min(first + count, cells_.size()));
    std::fill(cells_.begin() + static_cast<std::ptrdiff_t>(first), end, kErased);
  }
  void Break(const StuckBit& stuck) { stuck_.push_back(stuck); }

  [[nodiscard]] std::span<std::uint8_t> cells() { return cells_; }

 private:
  std::vector<std::uint8_t> cells_;
  std::vector<StuckBit> stuck_;
};

}  // namespace fliglaf::simulator
