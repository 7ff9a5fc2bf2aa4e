#pragma once

#include <cstdint>
#include <vector>

#include "simulator/chips/serial_chip.h"
#include "simulator/flash_array.h"
#include "simulator/silicon.h"

namespace fliglaf::simulator {

/// A flash microcontroller whose serial instructions begin with 0xAA and are framed by a select
/// line. Works as the data sheets of such parts publish it:
/// - It is in programming mode while reset is high, after the programming enable.
/// - An instruction is carried out when the select rises, a read while its bytes go out. Nothing is
///   carried out while a write or an erase is in progress; what is read then is 0x00.
/// - A page takes up to its size of bytes; the address wraps round within it.
/// - Lock bit 0 forbids writing, lock bit 1 reading as well (0x00 is read). They can only be
///   written to 0; a chip erase lifts them. Unimplemented bits read as 1.
/// - A new part has the ISP fuse programmed (bit 0 at 0), and no other one. Without it the interface
///   is dead from the next reset on.
/// A host that waits for nothing after fuse and lock bits is served: their write time is less than
/// the calls take that select the chip again.
class FramedPageChip : public SerialChip {
 public:
  FramedPageChip(const Clock& clock, const Silicon& silicon);

  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

 private:
  void Restart() override;
  void TakeByte(std::uint8_t byte) override;
  void Selected() override { frame_.clear(); }
  void Released() override;
  [[nodiscard]] std::uint8_t Answer() const;
  void Write();
  void WritePage();
  void EraseChip();

  /// Flash address of byte `offset` of the page that the instruction names.
  [[nodiscard]] std::uint32_t PageAddress(std::size_t offset) const;
  [[nodiscard]] bool may_write() const { return lock_ == kAllLockBits; }
  [[nodiscard]] bool may_read() const { return (lock_ & 0x02) != 0; }

  static constexpr std::uint8_t kAllFuseBits = 0x0F;
  static constexpr std::uint8_t kIspDisable = 0x01;
  static constexpr std::uint8_t kFactoryFuses = kAllFuseBits & ~kIspDisable;
  static constexpr std::uint8_t kAllLockBits = 0x03;

  Silicon silicon_;
  FlashArray flash_;
  std::uint8_t fuses_ = kFactoryFuses;
  std::uint8_t lock_ = kAllLockBits;

  bool answers_ = true;  ///< as the fuses were at the last reset
  bool enabled_ = false;
  std::vector<std::uint8_t> frame_;  ///< since the select fell
};

}  // namespace fliglaf::simulator
