#pragma once

#include <cstdint>
#include <vector>

#include "simulator/chips/instruction_chip.h"
#include "simulator/flash_array.h"
#include "simulator/silicon.h"

namespace fliglaf::simulator {

/// A flash microcontroller of the 8051 kind with serial programming: four-byte instructions, pages
/// of 256 bytes, three lock levels. Works as the data sheets of such parts publish it:
/// - The interface listens while reset is high and is synchronised if the clock was low when reset
///   rose; that edge also leaves programming mode.
/// - Only the programming enable is understood before it; the fourth byte answers 0x69.
/// - It is busy for its write, erase and lock times. Data bytes and instructions that come while it
///   is busy are taken in and not carried out; what is read then is 0x00.
/// - Level 1 forbids programming, level 2 reading as well (0x00 is read), level 3 external
///   execution. Each level needs the one before it; a chip erase lifts them.
class Isp51Chip : public InstructionChip {
 public:
  /// 256 to 8192 bytes of flash.
  Isp51Chip(const Clock& clock, const Silicon& silicon);

  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

 private:
  enum class Phase : std::uint8_t { kInstruction, kReadingPage, kWritingPage };

  void Restart() override;
  void TakeByte(std::uint8_t byte) override;
  [[nodiscard]] std::optional<std::uint8_t> Answer() const override;
  void StartPage(Phase phase);
  void TakePageByte(std::uint8_t byte);
  void OfferPageByte();
  void Execute() override;
  void WriteLockLevel(std::uint8_t level);

  [[nodiscard]] bool may_write() const { return enabled() && lock_level_ < 1; }
  [[nodiscard]] bool may_read() const { return enabled() && lock_level_ < 2; }

  Silicon silicon_;
  FlashArray flash_;
  std::uint8_t lock_level_ = 0;

  Phase phase_ = Phase::kInstruction;
  std::uint32_t page_ = 0;
  int page_bytes_ = 0;
  bool busy_with_lock_ = false;
};

}  // namespace fliglaf::simulator
