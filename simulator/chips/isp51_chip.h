#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "simulator/chips/serial_chip.h"
#include "simulator/flash_array.h"

namespace fliglaf::simulator {

/// How long the chip is busy with what it does by itself, in ns.
struct Isp51Timing {
  std::int64_t byte_write;
  std::int64_t chip_erase;
  std::int64_t lock_write;
};

/// A flash microcontroller of the 8051 kind with serial programming: four-byte instructions, pages
/// of 256 bytes, three lock levels. Works as the data sheets of such parts publish it:
/// - The interface listens while reset is high and is synchronised if the clock was low when reset
///   rose; that edge also leaves programming mode.
/// - Only the programming enable is understood before it; the fourth byte answers 0x69.
/// - It is busy for its write, erase and lock times. Data bytes and instructions that come while it
///   is busy are taken in and not carried out; what is read then is 0x00.
/// - Level 1 forbids programming, level 2 reading as well (0x00 is read), level 3 external
///   execution. Each level needs the one before it; a chip erase lifts them.
class Isp51Chip : public SerialChip {
 public:
  /// `flash_bytes`: 256 to 8192.
  Isp51Chip(const Clock& clock, std::size_t flash_bytes, std::array<std::uint8_t, 3> signature,
            const Isp51Timing& timing);

  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

 private:
  enum class Phase : std::uint8_t { kInstruction, kReadingPage, kWritingPage };

  void Restart() override;
  void TakeByte(std::uint8_t byte) override;
  void TakeInstructionByte(std::uint8_t byte);
  void StartPage(Phase phase);
  void TakePageByte(std::uint8_t byte);
  void OfferPageByte();
  void Execute();
  void WriteLockLevel(std::uint8_t level);

  [[nodiscard]] bool may_write() const { return enabled_ && lock_level_ < 1; }
  [[nodiscard]] bool may_read() const { return enabled_ && lock_level_ < 2; }

  FlashArray flash_;
  std::array<std::uint8_t, 3> signature_;
  Isp51Timing timing_;
  std::uint8_t lock_level_ = 0;

  bool enabled_ = false;
  Phase phase_ = Phase::kInstruction;
  std::array<std::uint8_t, 4> instruction_{};
  std::size_t instruction_bytes_ = 0;
  std::uint32_t page_ = 0;
  int page_bytes_ = 0;
  bool busy_with_lock_ = false;
};

}  // namespace fliglaf::simulator
